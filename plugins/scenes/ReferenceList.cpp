// SPDX-License-Identifier: Apache-2.0

#include "ReferenceList.h"

#include "XmlValue.h"

#include "KitNames.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/PercentCoding.h"

namespace Halvern::Formats::Scenes {

namespace {

constexpr std::size_t MaxReferences = 1'000'000;
/// The text before addresses, of all places in one document.
constexpr std::size_t MaxPrefix = 4096;

/// A URI that neither markup nor a section of plain text reads as something else.
std::string ContentUri(std::string_view path)
{
    std::string safe;
    for (const char c : UriOfPath(path)) {
        if (c == '&')
            safe += "%26";
        else
            safe += c;
    }
    return safe;
}

bool IsHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// True where a "%" stands for another byte.
bool IsEncodedAt(std::string_view text, std::size_t at)
{
    return text[at] == '%' && at + 2 < text.size() && IsHexDigit(text[at + 1]) &&
           IsHexDigit(text[at + 2]);
}

bool IsEncoded(std::string_view address)
{
    for (std::size_t at = 0; at < address.size(); ++at)
        if (IsEncodedAt(address, at))
            return true;
    return false;
}

/// True for what means something else where it stands as it is.
bool NeedsEncoding(char c, std::string_view next)
{
    constexpr std::string_view special = "#?\"\\";
    if (c == '%')
        return next.size() > 1 && IsHexDigit(next[0]) && IsHexDigit(next[1]);
    const auto byte = static_cast<unsigned char>(c);
    return byte < ' ' || byte == 0x7F || special.find(c) != std::string_view::npos;
}

/// The URI for a path with no more encoded than has to be.
std::string PlainUri(std::string_view path)
{
    const std::string uri = UriOfPath(path);
    std::string plain;
    for (std::size_t at = 0; at < uri.size(); ++at) {
        if (!IsEncodedAt(uri, at)) {
            plain += uri[at];
            continue;
        }
        const std::string_view encoded = std::string_view(uri).substr(at, 3);
        const std::string decoded = PercentDecode(encoded);
        if (NeedsEncoding(decoded.front(), std::string_view(uri).substr(at + 3)))
            plain += encoded;
        else
            plain += decoded;
        at += 2;
    }
    return plain;
}

std::string UriLike(const Reference& reference, std::string_view path)
{
    return IsEncoded(reference.address) ? UriOfPath(path) : PlainUri(path);
}

} // namespace

std::string ReferenceList::NextId(const std::string& id)
{
    if (m_counts.size() > MaxReferences)
        throw FormatError("more than " + std::to_string(MaxReferences) + " addresses");
    const std::size_t count = ++m_counts[id];
    return count == 1 ? id : id + '#' + std::to_string(count);
}

Reference& ReferenceList::Add(Reference reference, std::size_t position)
{
    if (m_references.size() == MaxReferences)
        throw FormatError("more than " + std::to_string(MaxReferences) + " links", position);
    return m_references.emplace_back(std::move(reference));
}

Reference* ReferenceList::AddXml(const std::string& id, std::string_view xml, Span span,
                                 std::string_view value, Notation notation)
{
    const std::string name = NextId(id);
    const bool isWhole = notation == Notation::XmlPath || notation == Notation::XmlPictureUri;
    const Span part = isWhole ? WithoutBlanks(value) : PathPart(value);
    const std::string_view address = value.substr(part.begin, part.end - part.begin);
    if (!IsLinkUri(address))
        return nullptr;
    if (address.size() > MaxAddress)
        throw FormatError("an address of more than 64 KiB", span.begin);
    const bool isContent =
        notation == Notation::XmlContentUri || notation == Notation::XmlPictureUri;
    const XmlText text =
        isContent ? DecodeXmlText(xml, span.begin, span.end) : DecodeXmlAttribute(xml, span);
    const std::optional<Span> place = text.text == value ? PlaceOf(xml, text, part) : std::nullopt;
    Reference reference;
    reference.id = name;
    reference.address = address;
    reference.notation = notation;
    reference.isFixed = !place;
    reference.span = place.value_or(span);
    return &Add(std::move(reference), span.begin);
}

std::size_t ReferenceList::AddPrefix(Prefix prefix)
{
    if (m_prefixes.size() == MaxReferences || prefix.text.size() > MaxPrefix)
        throw FormatError("too much text before addresses", prefix.span.begin);
    m_prefixes.push_back(std::move(prefix));
    return m_prefixes.size() - 1;
}

std::string_view ReferenceList::PrefixOf(const Reference& reference) const
{
    return reference.prefix ? std::string_view(m_prefixes[*reference.prefix].text)
                            : std::string_view();
}

bool ReferenceList::IsLink(const Reference& reference) const
{
    if (IsFileUri(reference.address))
        return true;
    return !reference.prefix || !m_prefixes[*reference.prefix].isElsewhere;
}

std::string ReferenceList::PathOf(const Reference& reference,
                                  const std::filesystem::path& folder) const
{
    const std::string before(PrefixOf(reference));
    if (reference.notation == Notation::XmlPath) {
        const std::string path = before + reference.address;
        return IsFileUri(path) ? PathOfUri(path, folder) : WithSlashes(path, folder);
    }
    const bool isWhole = IsFileUri(reference.address) || IsWholePath(reference.address);
    if (before.empty() || isWhole)
        return PathOfUri(reference.address, folder);
    return before + PathOfUri(reference.address, PathIn(folder, before));
}

std::string Written(const Reference& reference, std::string_view path)
{
    if (reference.isFixed)
        throw FormatError("link " + reference.id +
                          " is made of entities or of several parts, which stay as they are");
    switch (reference.notation) {
    case Notation::XmlUri:
        return EscapeXmlAttribute(UriOfPath(path));
    case Notation::XmlListedUri:
        return EscapeXmlAttribute(UriLike(reference, path));
    case Notation::XmlContentUri:
    case Notation::XmlPictureUri:
        return ContentUri(path);
    case Notation::XmlPath:
        return EscapeXmlAttribute(path);
    case Notation::VrmlString:
        return UriLike(reference, path);
    case Notation::VrmlWord:
        return '"' + UriLike(reference, path) + '"';
    }
    return {};
}

} // namespace Halvern::Formats::Scenes
