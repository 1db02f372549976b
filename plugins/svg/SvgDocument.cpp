// SPDX-License-Identifier: Apache-2.0

#include "SvgDocument.h"

#include "KitNames.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/TextEdits.h"
#include "pluginkit/Utf.h"
#include "pluginkit/Xml.h"

#include <algorithm>

namespace Halvern::Formats::Svg {

namespace {

std::string ReadText(const InputFile& file, Compression compression)
{
    if (compression != Compression::None)
        return ReadDecompressed(
            file, std::min<std::uint64_t>(MaxXmlSize, DecompressedLimit(file.Size())));
    if (file.Size() > MaxXmlSize)
        throw FormatError("the document is larger than 256 MiB");
    return file.Read(0, file.Size());
}

std::string AbsoluteName(const std::filesystem::path& document, const std::string& path)
{
    return PathToUtf8(NormalPath(PathIn(document.parent_path(), path)));
}

} // namespace

SvgDocument::SvgDocument(const std::filesystem::path& path, FindReferences find)
    : m_file(path), m_compression(CompressionOf(m_file)), m_text(ReadText(m_file, m_compression))
{
    try {
        m_references = find(m_text);
    } catch (const FormatError& error) {
        if (m_compression == Compression::None || !error.Position())
            throw;
        // The position counts in what was packed, not in the file.
        throw FormatError(error.what() + (" at byte " + std::to_string(*error.Position())) +
                          " of the unpacked text");
    }
}

bool SvgDocument::NamesFolder(const std::string& path) const
{
    return Formats::NamesFolder(path, m_file.Path().parent_path());
}

std::vector<DocumentLink> SvgDocument::Links() const
{
    std::vector<DocumentLink> links;
    for (const UriReference& reference : m_references) {
        const std::optional<std::string> path = PathOf(reference, m_file.Path().parent_path());
        if (path && !NamesFolder(*path))
            links.push_back({reference.id, *path});
    }
    return links;
}

std::optional<std::string> SvgDocument::UnlistedPathOf(const std::string& id) const
{
    const auto found =
        std::find_if(m_references.begin(), m_references.end(),
                     [&](const UriReference& reference) { return reference.id == id; });
    if (found == m_references.end())
        return std::nullopt;
    return PathOfUri(found->uri, m_file.Path().parent_path());
}

void SvgDocument::Rewrite(const NewPaths& paths)
{
    std::vector<TextEdit> edits;
    for (const UriReference& reference : m_references) {
        const auto wanted = paths.find(reference.id);
        if (wanted == paths.end())
            continue;
        const Span& span = reference.span;
        edits.push_back({span.begin, span.end, TextFor(reference, wanted->second)});
        if (reference.absoluteSpan) {
            const std::string name = AbsoluteName(m_file.Path(), wanted->second);
            edits.push_back({reference.absoluteSpan->begin, reference.absoluteSpan->end,
                             EscapeXmlAttribute(name)});
        }
    }
    Replace(ApplyEdits(m_text, std::move(edits)));
}

void SvgDocument::Replace(const std::string& text)
{
    ReplacementFile replacement(m_file);
    replacement.Write(m_compression == Compression::None ? text : Compressed(m_compression, text));
    replacement.Commit();
}

} // namespace Halvern::Formats::Svg
