// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Formats::Svg {

/// The bytes [begin, end) of a document.
struct Span
{
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// A reference to a file, as it stands in a document.
struct UriReference
{
    enum class Place
    {
        Attribute,
        StyleSheet
    };

    std::string id;
    /// The address without what follows a "#" or "?".
    std::string uri;
    /// The bytes that give way to another address: those of `uri`, if they could be told apart from
    /// the ones of `suffix`.
    Span span;
    /// What has to stand after a new address; empty when it is not part of the span.
    std::string suffix;
    Place place = Place::Attribute;
    /// The same file by its absolute name, in another attribute: Inkscape takes it when it does not
    /// find the first one.
    std::string absolutePath;
    std::optional<Span> absoluteSpan;
    /// The folder that xml:base gives, with a "/" at its end; null for the document's own.
    std::shared_ptr<const std::string> base;
};

/// How much of an address names the file: blanks around it, a fragment and a query do not.
Span PathPart(std::string_view uri);

/// True for a path that no base changes, whichever system it is of.
bool IsWholePath(std::string_view path);

/// The query and the fragment of an address, with their marks; empty when it has none.
std::string_view SuffixOf(std::string_view uri);

/// The path of the file, for a document in `folder`; nothing when the reference is none to a file.
/// A document that names itself by its file name is one: its copy may get another name.
std::optional<std::string> PathOf(const UriReference& reference,
                                  const std::filesystem::path& folder);

/// The same for a reference to whatever: a path that is a folder's beside the source may be a
/// file's elsewhere.
std::string PathOfReference(const UriReference& reference, const std::filesystem::path& folder);

/// What has to stand in the span for the reference to name `path`. Throws FormatError when no
/// address that is seen from the reference's base can.
std::string TextFor(const UriReference& reference, std::string_view path);

} // namespace Halvern::Formats::Svg
