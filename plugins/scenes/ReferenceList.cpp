// SPDX-License-Identifier: Apache-2.0

#include "ReferenceList.h"

#include "XmlValue.h"

#include "KitNames.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"

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
    const std::optional<Span> place =
        text.text == value ? PlaceOf(xml, text, part) : std::nullopt;
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
    case Notation::XmlContentUri:
    case Notation::XmlPictureUri:
        return ContentUri(path);
    case Notation::XmlPath:
        return EscapeXmlAttribute(path);
    case Notation::VrmlString:
        return UriOfPath(path);
    case Notation::VrmlWord:
        return '"' + UriOfPath(path) + '"';
    }
    return {};
}

} // namespace Halvern::Formats::Scenes
