// SPDX-License-Identifier: Apache-2.0

#include "StringList.h"

#include "KitNames.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Scenes {

std::string Unescaped(std::string_view text)
{
    std::string value;
    value.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool isEscape = text[at] == '\\' && at + 1 < text.size() &&
                              (text[at + 1] == '"' || text[at + 1] == '\\');
        value += text[isEscape ? ++at : at];
    }
    return value;
}

std::size_t EndOfString(std::string_view text, std::size_t begin)
{
    std::size_t at = begin;
    while ((at = text.find_first_of("\"\\", at)) < text.size() && text[at] == '\\')
        at += 2;
    return std::min(at, text.size());
}

std::vector<ListedString> ReadStringList(std::string_view text)
{
    std::vector<ListedString> list;
    std::size_t at = WithoutBlanks(text).begin;
    if (at < text.size() && text[at] != '"') {
        const Span span = WithoutBlanks(text);
        return {{std::string(text.substr(span.begin, span.end - span.begin)), span}};
    }
    while ((at = text.find('"', at)) < text.size()) {
        const Span span{at + 1, EndOfString(text, at + 1)};
        list.push_back({Unescaped(text.substr(span.begin, span.end - span.begin)), span});
        at = span.end + 1;
    }
    return list;
}

bool IsAddressField(std::string_view name)
{
    return name == "url" || name.ends_with("Url");
}

std::optional<Reference> AddressIn(const ListedString& string)
{
    const Span path = PathPart(string.value);
    const std::string_view address =
        std::string_view(string.value).substr(path.begin, path.end - path.begin);
    if (!IsLinkUri(address) || address.size() > MaxAddress ||
        address.find_first_of("\r\n") != std::string_view::npos)
        return std::nullopt;
    Reference reference;
    reference.address = Utf8OrLatin1(address);
    reference.notation = Notation::XmlListedUri;
    // Escapes make it longer than it is.
    const bool isPlain = string.value.size() == string.span.end - string.span.begin;
    reference.span =
        isPlain ? Span{string.span.begin + path.begin, string.span.begin + path.end} : string.span;
    return reference;
}

} // namespace Halvern::Formats::Scenes
