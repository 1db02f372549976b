// SPDX-License-Identifier: Apache-2.0

#include "base/FileStatus.h"

namespace Halvern::Base {

bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b)
{
    const FileStatus left = ReadFileStatus(a);
    const FileStatus right = ReadFileStatus(b);
    return left.Exists() && right.Exists() && left.device == right.device &&
           left.index == right.index;
}

} // namespace Halvern::Base
