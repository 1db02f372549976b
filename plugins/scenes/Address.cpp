// SPDX-License-Identifier: Apache-2.0

#include "Address.h"

#include "KitNames.h"
#include "base/PathText.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Scenes {

namespace {

constexpr std::string_view Blanks = " \t\r\n\f";
/// Two of them fit an id.
constexpr std::size_t MaxName = 100;

} // namespace

Span WithoutBlanks(std::string_view text)
{
    const std::size_t begin = std::min(text.find_first_not_of(Blanks), text.size());
    const std::size_t last = text.find_last_not_of(Blanks);
    return {begin, last == std::string_view::npos ? begin : last + 1};
}

Span PathPart(std::string_view address)
{
    return WithoutBlanks(address.substr(0, address.find_first_of("#?")));
}

bool IsWholePath(std::string_view path)
{
    return path.starts_with('/') || Base::HasDrive(path) || IsAbsolutePath(PathFromUtf8(path));
}

std::string_view LocalName(std::string_view name)
{
    return name.substr(name.find(':') + 1);
}

std::string NameForId(std::string_view name, std::string_view otherwise)
{
    if (name.empty() || name.size() > MaxName)
        return Utf8OrLatin1(otherwise.substr(0, MaxName));
    std::string id = '#' + Utf8OrLatin1(name);
    std::replace_if(
        id.begin(), id.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, '?');
    return id;
}

} // namespace Halvern::Formats::Scenes
