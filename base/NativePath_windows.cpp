// SPDX-License-Identifier: Apache-2.0

#include "base/NativePath.h"

#include "base/PathText.h"
#include "base/Utf.h"
#include "base/WindowsApi.h"

namespace Halvern::Base {

std::filesystem::path NativePath(std::u16string_view text)
{
    return {ToWide(text)};
}

std::filesystem::path NativePath(std::string_view utf8)
{
    return {ToWide(ToUtf16Lossy(utf8))};
}

std::u16string PathText(const std::filesystem::path& path)
{
    std::u16string text(FromWide(path.generic_wstring()));
    // One of the two slashes before a server is gone.
    if (IsServerPath(path) && !NamesServer(text))
        text.insert(text.begin(), u'/');
    return text;
}

std::string PathToUtf8(const std::filesystem::path& path)
{
    return ToUtf8Lossy(PathText(path));
}

bool IsServerPath(const std::filesystem::path& path)
{
    return NamesServer(FromWide(path.native()));
}

} // namespace Halvern::Base
