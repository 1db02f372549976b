// SPDX-License-Identifier: Apache-2.0

#include "base/NativePath.h"

#include "base/Utf.h"

namespace Halvern::Base {

std::filesystem::path NativePath(std::u16string_view text)
{
    return {ToUtf8Lossy(text)};
}

std::filesystem::path NativePath(std::string_view utf8)
{
    return {utf8};
}

std::u16string PathText(const std::filesystem::path& path)
{
    return ToUtf16Lossy(path.native());
}

std::string PathToUtf8(const std::filesystem::path& path)
{
    return path.generic_string();
}

bool IsServerPath(const std::filesystem::path&)
{
    return false;
}

} // namespace Halvern::Base
