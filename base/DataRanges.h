// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileHandle.h"

#include <cstdint>
#include <limits>

namespace Halvern::Base {

/// From a file's bytes at `begin` to those before `end`.
struct DataRange
{
    std::uint64_t begin = 0;
    std::uint64_t end = 0;

    bool IsEmpty() const noexcept { return begin == end; }
};

/// The end of a range that ends where reading finds the end of the file.
inline constexpr std::uint64_t ToTheEnd = std::numeric_limits<std::int64_t>::max();

/// Where an open file holds bytes. What lies between are holes: they read as zeros, and take no
/// room on the disk. A file system that does not tell them has none.
class DataRanges
{
public:
    explicit DataRanges(Handle file) noexcept;

    /// The first range that is not over at `offset`, as the file is now: what lies between them is
    /// a hole. Without any it is empty, and lies at the end of the file.
    DataRange Next(std::uint64_t offset) const noexcept;

private:
    Handle m_file;
    bool m_isSparse;
};

} // namespace Halvern::Base
