// SPDX-License-Identifier: Apache-2.0

#include "base/DataRanges.h"

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

constexpr off_t BlockSize = 512; // of st_blocks, whatever the disk's own is

} // namespace

DataRanges::DataRanges(Handle file) noexcept : m_file(file)
{
    struct stat info = {};
    // A file with all its blocks is not asked about: that would cost more than reading a small one.
    m_isSparse =
        ::fstat(static_cast<int>(file), &info) == 0 && info.st_blocks * BlockSize < info.st_size;
}

DataRange DataRanges::Next(std::uint64_t offset) const noexcept
{
    if (!m_isSparse)
        return {offset, ToTheEnd};
    const int fd = static_cast<int>(m_file);
    const off_t begin = ::lseek(fd, static_cast<off_t>(offset), SEEK_DATA);
    struct stat info = {};
    if (begin < 0 && errno == ENXIO && ::fstat(fd, &info) == 0) {
        const std::uint64_t end = std::max(offset, static_cast<std::uint64_t>(info.st_size));
        return {end, end};
    }
    if (begin < 0)
        return {offset, ToTheEnd};
    const off_t end = ::lseek(fd, begin, SEEK_HOLE);
    return {static_cast<std::uint64_t>(begin),
            end > begin ? static_cast<std::uint64_t>(end) : ToTheEnd};
}

} // namespace Halvern::Base
