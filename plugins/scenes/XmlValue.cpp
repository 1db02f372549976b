// SPDX-License-Identifier: Apache-2.0

#include "XmlValue.h"

#include <algorithm>

namespace Halvern::Formats::Scenes {

XmlText DecodeXmlAttribute(std::string_view xml, Span attribute)
{
    const XmlText decoded = DecodeXmlText(xml, attribute.begin, attribute.end);
    XmlText value;
    value.text.reserve(decoded.text.size());
    value.places.reserve(decoded.places.size());
    for (std::size_t i = 0; i < decoded.text.size(); ++i) {
        const std::string_view raw = xml.substr(decoded.places[i], 2);
        if (raw == "\r\n")
            continue;
        const bool isLineEnd = raw.starts_with('\r') || raw.starts_with('\n');
        value.text += isLineEnd || raw.starts_with('\t') ? ' ' : decoded.text[i];
        value.places.push_back(decoded.places[i]);
    }
    value.places.push_back(decoded.places.back());
    return value;
}

std::optional<Span> PlaceOf(std::string_view xml, const XmlText& text, Span part)
{
    if (part.begin == part.end)
        return Span{text.places[part.begin], text.places[part.begin]};
    // The last character is one byte, or an entity: what comes next may lie after markup.
    const std::size_t last = text.places[part.end - 1];
    std::size_t end = last + 1;
    const bool isEntity = xml[last] == '&' && (text.text[part.end - 1] != '&' ||
                                               xml.substr(last).starts_with("&amp;") ||
                                               xml.substr(last).starts_with("&#"));
    if (isEntity)
        end = std::min(xml.find(';', last), xml.size() - 1) + 1;
    const Span place{text.places[part.begin], end};
    if (xml.substr(place.begin, end - place.begin).find('<') != std::string_view::npos)
        return std::nullopt;
    return place;
}

} // namespace Halvern::Formats::Scenes
