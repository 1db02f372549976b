// SPDX-License-Identifier: Apache-2.0

#include "base/RealPath.h"

#include <system_error>

namespace Halvern::Base {

std::filesystem::path RealPath(const std::filesystem::path& path)
{
    std::error_code error;
    std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? std::filesystem::path() : real;
}

bool MayLeadElsewhere(const std::filesystem::path& path)
{
    std::error_code ignored;
    return std::filesystem::is_symlink(path, ignored);
}

} // namespace Halvern::Base
