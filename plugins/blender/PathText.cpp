// SPDX-License-Identifier: Apache-2.0

#include "PathText.h"

#include <algorithm>

namespace Halvern::Formats::Blender {

namespace {

bool IsAbsolute(std::string_view path)
{
    const bool drive = path.size() > 1 && path[1] == ':';
    return drive || path.starts_with('/');
}

} // namespace

std::string PathOfText(std::string_view text)
{
    if (text.starts_with("//"))
        text.remove_prefix(std::min(text.find_first_not_of("/\\"), text.size()));
    std::string path(text);
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string TextOfPath(std::string_view path)
{
    std::string text(path);
    if (path.starts_with("//")) { // a server, which "//" would hide
        std::replace(text.begin(), text.end(), '/', '\\');
        return text;
    }
    while (text.starts_with("./"))
        text.erase(0, 2);
    return IsAbsolute(text) ? text : "//" + text;
}

} // namespace Halvern::Formats::Blender
