// SPDX-License-Identifier: Apache-2.0

#include "base/Space.h"

#include "base/FileStatus.h"
#include "base/PosixApi.h"

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

} // namespace Halvern::Base
