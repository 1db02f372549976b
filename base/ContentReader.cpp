// SPDX-License-Identifier: Apache-2.0

#include "base/ContentReader.h"

#include "base/WorkWatch.h"

#include <algorithm>

namespace Halvern::Base {

namespace {

constexpr std::size_t LeastPiece = std::size_t(4) * 1024;
constexpr std::size_t FirstPiece = std::size_t(64) * 1024;
constexpr std::size_t BufferSize = std::size_t(256) * 1024;
/// Hashing zeros takes its time, too.
constexpr std::uint64_t HolePiece = std::uint64_t(16) << 20;

constexpr std::chrono::milliseconds Long(20);
constexpr std::chrono::milliseconds Short(5);

} // namespace

std::size_t PieceSize::Next() noexcept
{
    const Clock::time_point now = Clock::now();
    if (m_begin != Clock::time_point()) {
        const Clock::duration took = now - m_begin;
        // At once, where a disk has become slow.
        for (Clock::duration limit = Long; took > limit && m_size > LeastPiece; limit *= 2)
            m_size /= 2;
        if (took < Short)
            m_size = std::min(2 * m_size, m_most);
    }
    m_begin = now;
    return m_size;
}

FileResult GoOnOrStop()
{
    WorkWatch* const watch = WorkWatch::OfThisThread();
    return watch && !watch->GoesOn() ? FileResult::Refused(FileProblem::Stopped, "stopped")
                                     : FileResult();
}

ContentReader::ContentReader(Handle file, std::uint64_t from)
    : m_file(file), m_ranges(file), m_range(m_ranges.Next(from)), m_offset(from),
      m_pieceSize(FirstPiece, BufferSize),
      m_buffer(std::make_unique_for_overwrite<char[]>(BufferSize))
{}

FileResult ContentReader::Next(Piece& piece)
{
    if (FileResult stopped = GoOnOrStop(); !stopped)
        return stopped;
    if (m_offset == m_range.end)
        m_range = m_ranges.Next(m_offset);
    if (m_offset >= m_range.begin)
        return ReadData(piece);
    piece = {m_offset, std::min(m_range.begin - m_offset, HolePiece), {}};
    m_offset += piece.size;
    return {};
}

FileResult ContentReader::ReadData(Piece& piece)
{
    const std::uint64_t left = m_range.end - m_offset;
    const std::size_t wanted =
        static_cast<std::size_t>(std::min(left, static_cast<std::uint64_t>(m_pieceSize.Next())));
    std::size_t got = 0;
    if (wanted > 0)
        if (FileResult read = ReadSome(m_file, m_offset, m_buffer.get(), wanted, got); !read)
            return read;
    piece = {m_offset, got, {m_buffer.get(), got}};
    m_offset += got;
    return {};
}

} // namespace Halvern::Base
