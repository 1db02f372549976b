// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Address.h"

#include "KitNames.h"
#include "pluginkit/Xml.h"

#include <optional>
#include <string_view>

namespace Halvern::Formats::Scenes {

/// The value of an attribute, line ends being blanks, with the places that its bytes come from.
XmlText DecodeXmlAttribute(std::string_view xml, Span attribute);

/// The bytes of a document that a part of a decoded text comes from; nothing when there is markup
/// among them.
std::optional<Span> PlaceOf(std::string_view xml, const XmlText& text, Span part);

} // namespace Halvern::Formats::Scenes
