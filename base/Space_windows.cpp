// SPDX-License-Identifier: Apache-2.0

#include "base/Space.h"

#include "base/FileStatus.h"
#include "base/NativePath.h"
#include "base/WindowsApi.h"

namespace Halvern::Base {

FileResult ReadSpace(const std::filesystem::path& folder, Space& space)
{
    ULARGE_INTEGER bytes = {};
    if (!::GetDiskFreeSpaceExW(ApiPath(folder).c_str(), &bytes, nullptr, nullptr))
        return LastFailure(PathToUtf8(folder));
    space = {};
    space.freeBytes = bytes.QuadPart;
    space.device = ReadFileStatus(folder).device;
    return {};
}

std::uint64_t BytesOfCopy(const std::filesystem::path& file)
{
    return ReadFileStatus(file).size; // the system fills the holes of a copy
}

} // namespace Halvern::Base
