// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::PluginKit {

// XML in UTF-8 with the byte offsets of what it holds, so that it can be changed in place (see
// TextEdits.h). Needs Corsync::PluginKitXml, and with it expat. Failures are FormatErrors.

/// An attribute as it was written into a tag. Name and value are gone when the visitor returns.
struct XmlAttribute
{
    /// With its prefix.
    std::string_view name;
    /// Decoded, entities of the document included.
    std::string_view value;
    /// The bytes between the quotation marks.
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// Name, too, is gone when the visitor returns.
struct XmlElement
{
    /// With its prefix.
    std::string_view name;
    /// Those of the tag; defaults of a document type are not among them.
    std::vector<XmlAttribute> attributes;
    /// The start tag's bytes, the angle brackets included.
    std::size_t begin = 0;
    std::size_t end = 0;

    /// Null when the tag has no such attribute.
    const XmlAttribute* Find(std::string_view attribute) const;
    /// Empty when the tag has no such attribute.
    std::string_view Value(std::string_view attribute) const;
};

/// Told what a document holds, in its order.
class XmlVisitor
{
public:
    virtual ~XmlVisitor() = default;
    virtual void Start(const XmlElement& element) = 0;
    /// `begin` is where the end tag begins; after the start tag if that one closes itself.
    virtual void End(std::string_view name, std::size_t begin) = 0;
    /// A processing instruction, "<?target data?>". `begin` and `end` are the bytes of `data`.
    virtual void Instruction(std::string_view target, std::size_t begin, std::size_t end);
};

/// Walks through a document in UTF-8. What is not well-formed, has another encoding, or is nested
/// deeper than MaxXmlNesting is a FormatError whose position counts in `text`; exceptions of the
/// visitor come through. Entities are replaced in attributes only, never in contents, and nothing
/// outside the text is ever read. Entities that make more than twice the document of it, and more
/// than 8 MiB, are a FormatError, too, as are the limits below. Another encoding than UTF-8 may be
/// announced for ASCII.
///
/// Requires: `text` is no longer than MaxXmlSize.
void ReadXml(std::string_view text, XmlVisitor& visitor);

/// The same for a document that was made UTF-8 (see EncodedText.h), whatever it announces.
void ReadConvertedXml(std::string_view text, XmlVisitor& visitor);

/// The encoding of a document, as its first bytes show it or its declaration announces it: a name
/// for EncodedText. "UTF-8" without any, and "US-ASCII" for pure ASCII of whatever other name.
std::string XmlEncodingOf(std::string_view document);

inline constexpr std::size_t MaxXmlNesting = 512;
inline constexpr std::size_t MaxXmlSize = std::size_t(256) << 20;
/// Of an element or an attribute, in bytes.
inline constexpr std::size_t MaxXmlName = 4096;
/// In one tag.
inline constexpr std::size_t MaxXmlAttributes = 500'000;

/// Character data with the places that its bytes come from.
struct XmlText
{
    std::string text;
    /// places[i] is where the byte i of `text` comes from; one more place tells where it ends.
    std::vector<std::size_t> places;
    /// Where in `text` something else stands in the document, such as the end of a CDATA section,
    /// and where that begins.
    std::map<std::size_t, std::size_t> breaks = {};

    /// Where the byte before `position` ends in the document.
    std::size_t EndOf(std::size_t position) const;
};

/// The bytes [begin, end) of a document that ReadXml found well-formed, decoded: predefined and
/// numeric entities replaced, CDATA sections opened, comments and instructions left out. Entities
/// of the document stay as they are written.
XmlText DecodeXmlText(std::string_view document, std::size_t begin, std::size_t end);

/// Text as the value of an attribute, whichever quotation marks surround it. FormatError for
/// control characters and what else XML has no way to write.
std::string EscapeXmlAttribute(std::string_view text);

} // namespace Halvern::PluginKit
