// SPDX-License-Identifier: Apache-2.0

#include "ScribusDocument.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/TextEdits.h"
#include "pluginkit/Xml.h"

#include <algorithm>
#include <cstdint>

namespace Halvern::Formats::Scribus {

namespace {

EncodedText ReadText(const InputFile& file, Compression compression)
{
    if (compression == Compression::None && file.Size() > MaxXmlSize)
        throw FormatError("the document is larger than 256 MiB");
    std::string text =
        compression == Compression::None
            ? file.Read(0, file.Size())
            : ReadDecompressed(file,
                               std::min<std::uint64_t>(MaxXmlSize, DecompressedLimit(file.Size())));
    const std::string encoding = XmlEncodingOf(text);
    return EncodedText(std::move(text), encoding, MaxXmlSize);
}

/// As XML can have it whatever the encoding.
std::string NumberedCharacter(char32_t character)
{
    return "&#" + std::to_string(static_cast<std::uint32_t>(character)) + ';';
}

/// Such as what a click on a link opens.
bool IsAddress(const std::string& path)
{
    const std::size_t mark = path.find("://");
    return (mark != std::string::npos && mark > 1 && path.find('/') == mark + 1) ||
           path.starts_with("mailto:");
}

} // namespace

ScribusDocument::ScribusDocument(const std::filesystem::path& path)
    : m_file(path), m_compression(CompressionOf(m_file)), m_text(ReadText(m_file, m_compression))
{
    FindAll();
    for (std::size_t i = 0; i < m_paths.size(); ++i)
        m_byId.emplace(m_paths[i].id, i);
}

void ScribusDocument::FindAll()
{
    try {
        m_paths = FindScribusPaths(m_text.Utf8());
    } catch (const FormatError& error) {
        if (!error.Position())
            throw;
        const std::size_t place = m_text.PlaceOf(*error.Position());
        if (m_compression == Compression::None)
            throw FormatError(error.what(), place);
        // The position counts in what was packed, not in the file.
        throw FormatError(error.what() + (" at byte " + std::to_string(place)) +
                          " of the unpacked text");
    }
}

std::vector<DocumentLink> ScribusDocument::Links() const
{
    std::vector<DocumentLink> links;
    for (const ScribusPath& found : m_paths) {
        std::string path = WithSlashes(found.path, Folder());
        if (!IsAddress(path) && !NamesFolder(path, Folder()))
            links.push_back({found.id, std::move(path)});
    }
    return links;
}

std::optional<std::string> ScribusDocument::UnlistedPathOf(const std::string& id) const
{
    const auto found = m_byId.find(id);
    if (found == m_byId.end())
        return std::nullopt;
    return WithSlashes(m_paths[found->second].path, Folder());
}

void ScribusDocument::Rewrite(const NewPaths& paths)
{
    std::vector<TextEdit> edits;
    for (const ScribusPath& path : m_paths) {
        const auto wanted = paths.find(path.id);
        if (wanted != paths.end())
            edits.push_back({path.begin, path.end, EscapeXmlAttribute(wanted->second)});
    }
    const std::string bytes = m_text.WithEdits(std::move(edits), NumberedCharacter);
    ReplacementFile replacement(m_file);
    replacement.Write(m_compression == Compression::None ? bytes
                                                         : Compressed(m_compression, bytes));
    replacement.Commit();
}

} // namespace Halvern::Formats::Scribus
