// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Address.h"

#include "KitNames.h"
#include "pluginkit/Xml.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Scenes {

/// How an address is written.
enum class Notation
{
    /// A URI in an attribute.
    XmlUri,
    /// One of a list of URIs in an attribute. Few programs that read those take off an encoding:
    /// what is not encoded does not get to be.
    XmlListedUri,
    /// A URI as the content of an element, which may be a section of plain text.
    XmlContentUri,
    /// The same of a picture, of which there are no parts: a "#" that stands there belongs to the
    /// name. Blender's and other exporters leave it as it is.
    XmlPictureUri,
    /// A plain path in an attribute.
    XmlPath,
    /// The same between quotation marks, or in VRML 1.0 a mere word.
    VrmlString,
    VrmlWord
};

/// A text that is put before addresses, to be seen from there.
struct Prefix
{
    std::string text;
    /// Where it stands.
    Span span;
    /// No file: what is seen from there is none either.
    bool isElsewhere = false;
};

/// A reference to a file, as it stands in a document.
struct Reference
{
    std::string id;
    /// Decoded, without what follows a "#" or "?", and without the prefix.
    std::string address;
    /// The bytes that give way to another address.
    Span span;
    Notation notation = Notation::XmlUri;
    /// One of the list's prefixes.
    std::optional<std::size_t> prefix;
    /// It names a file only where one is there.
    bool needsFile = false;
    /// Made of entities of the document type, or of parts with markup between them: there are no
    /// bytes that could be changed.
    bool isFixed = false;
};

/// Everything in a document that may name a file, in its order.
class ReferenceList
{
public:
    /// An id that none has yet: "wood/url", "wood/url#2".
    std::string NextId(const std::string& id);
    /// Throws a FormatError when there are too many.
    Reference& Add(Reference reference, std::size_t position);
    /// The text [begin, end) of a document in XML, whose value is `value`, as an address; none is
    /// added for what names no file.
    Reference* AddXml(const std::string& id, std::string_view xml, Span span,
                      std::string_view value, Notation notation);
    std::size_t AddPrefix(Prefix prefix);

    const std::vector<Reference>& References() const { return m_references; }
    const std::vector<Prefix>& Prefixes() const { return m_prefixes; }

    /// The path of the file, for a document in `folder`.
    std::string PathOf(const Reference& reference, const std::filesystem::path& folder) const;
    bool IsLink(const Reference& reference) const;

private:
    std::string_view PrefixOf(const Reference& reference) const;

    std::vector<Reference> m_references;
    std::vector<Prefix> m_prefixes;
    std::map<std::string, std::size_t> m_counts;
};

/// The address as it has to stand in the document for a path. Throws a FormatError when the
/// notation has no way to write it.
std::string Written(const Reference& reference, std::string_view path);

} // namespace Halvern::Formats::Scenes
