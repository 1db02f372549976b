// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Freecad {

/// How FreeCAD understands a path.
enum class PathKind
{
    /// Relative to the folder of the document: links into other documents.
    FromDocument,
    /// Relative to the folder in which the program happens to run, so that only absolute paths are
    /// of use: pictures, fonts, imported parts.
    FromWorkingFolder,
};

/// A path as it stands in one of a document's XML files.
struct FoundLink
{
    /// "Object.Property", with "#2" and so on after it for a property with several links.
    std::string id;
    std::string path;
    PathKind kind;
    /// The bytes of the path, in the XML.
    std::size_t begin;
    std::size_t end;
};

/// More links or objects than these are refused rather than kept.
inline constexpr std::size_t MaxLinks = 1'000'000;
inline constexpr std::size_t MaxObjects = 1'000'000;

/// The links of Document.xml or GuiDocument.xml, in the order of the text. `idStart` goes before
/// each id, to tell the links of the two files apart. Throws FormatError; positions count in `xml`.
std::vector<FoundLink> FindLinks(std::string_view xml, const std::string& idStart);

} // namespace Halvern::Formats::Freecad
