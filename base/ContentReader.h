// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/DataRanges.h"
#include "base/FileHandle.h"
#include "base/FileResult.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace Halvern::Base {

/// The size of the next piece of some work, from the time that the last one took.
class PieceSize
{
public:
    PieceSize(std::size_t first, std::size_t most) noexcept : m_size(first), m_most(most) {}

    /// Each call begins a piece, and ends the one before.
    std::size_t Next() noexcept;

private:
    using Clock = std::chrono::steady_clock;

    std::size_t m_size;
    std::size_t m_most;
    Clock::time_point m_begin = {};
};

/// Reads an open file from a byte, the first, to its last, wherever somebody has read to, in pieces
/// between which the thread's WorkWatch is asked. Holes are not read.
class ContentReader
{
public:
    struct Piece
    {
        std::uint64_t offset = 0;
        /// 0: the end of the file.
        std::uint64_t size = 0;
        /// Valid until the next piece is read; empty for a hole.
        std::string_view bytes;

        bool IsHole() const noexcept { return bytes.empty(); }
    };

    explicit ContentReader(Handle file, std::uint64_t from = 0);

    FileResult Next(Piece& piece);

private:
    FileResult ReadData(Piece& piece);

    Handle m_file;
    DataRanges m_ranges;
    DataRange m_range;
    std::uint64_t m_offset = 0;
    PieceSize m_pieceSize;
    std::unique_ptr<char[]> m_buffer;
};

/// Success, or FileProblem::Stopped when the thread's WorkWatch says so.
FileResult GoOnOrStop();

} // namespace Halvern::Base
