// SPDX-License-Identifier: Apache-2.0

#include "base/NativePath.h"

#include "base/PathText.h"
#include "base/Utf.h"
#include "base/WindowsApi.h"

#include <algorithm>

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
    // The standard library's own way to forward slashes drops one of the two before a server.
    std::u16string text(FromWide(path.native()));
    std::replace(text.begin(), text.end(), u'\\', u'/');
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
