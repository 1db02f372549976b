// SPDX-License-Identifier: Apache-2.0

#include "base/Space.h"

#include "base/DataRanges.h"
#include "base/FileStatus.h"
#include "base/PosixApi.h"

#include <algorithm>

#include <sys/statvfs.h>

namespace Halvern::Base {

FileResult ReadSpace(const std::filesystem::path& folder, Space& space)
{
    struct statvfs info = {};
    if (::statvfs(folder.c_str(), &info) != 0)
        return LastFailure(folder.native());
    space = {};
    // A file system that does not count says that it has none at all, not that none is free.
    if (info.f_blocks > 0)
        space.freeBytes = std::uint64_t(info.f_bavail) * info.f_frsize;
    if (info.f_files > 0)
        space.freeFiles = info.f_favail;
    space.device = ReadFileStatus(folder).device;
    return {};
}

std::uint64_t BytesOfCopy(const std::filesystem::path& file)
{
    Handle handle = NoHandle;
    if (!OpenForReading(file, handle))
        return 0;
    const Descriptor opened(static_cast<int>(handle));
    const std::uint64_t size = ReadFileStatus(handle).size;
    const DataRanges ranges(handle);
    std::uint64_t bytes = 0;
    for (DataRange range = ranges.Next(0); !range.IsEmpty() && range.begin < size;
         range = ranges.Next(range.end))
        bytes += std::min(range.end, size) - range.begin;
    return bytes;
}

} // namespace Halvern::Base
