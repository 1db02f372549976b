// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/EncodedText.h"
#include "pluginkit/Xml.h"

#include <algorithm>

namespace Halvern::PluginKit {

namespace {

constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";

/// What stands in the declaration behind "encoding"; empty without that.
std::string_view AnnouncedEncoding(std::string_view document)
{
    if (document.starts_with(Utf8Mark))
        document.remove_prefix(Utf8Mark.size());
    const std::string_view declaration = document.substr(0, document.find("?>"));
    const std::size_t name = declaration.find("encoding");
    if (!declaration.starts_with("<?xml") || name == std::string_view::npos)
        return {};
    const std::size_t open = declaration.find_first_of("\"'", name);
    if (open == std::string_view::npos)
        return {};
    const std::size_t close = declaration.find(declaration[open], open + 1);
    return declaration.substr(open + 1, close == std::string_view::npos ? 0 : close - open - 1);
}

bool IsUtf8(std::string_view name)
{
    return name == "UTF-8" || name == "utf-8" || name == "UTF8" || name == "utf8";
}

} // namespace

std::string XmlEncodingOf(std::string_view document)
{
    const std::string_view form = UnicodeFormOf(document, '<');
    if (!form.empty())
        return std::string(form);
    const std::string_view announced = AnnouncedEncoding(document);
    const bool isAscii = std::all_of(document.begin(), document.end(),
                                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (announced.empty() || IsUtf8(announced))
        return "UTF-8";
    // Letters of ASCII are the same ones under the name of any encoding that could be read so far;
    // others would not be, and have to be written as numbers.
    return isAscii ? "US-ASCII" : std::string(announced);
}

} // namespace Halvern::PluginKit
