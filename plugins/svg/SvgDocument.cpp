// SPDX-License-Identifier: Apache-2.0

#include "SvgDocument.h"

#include "SvgLinkFinder.h"

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
#include <cstdint>

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

/// A style sheet says what it is by a mark alone, else it is UTF-8.
std::string StyleSheetEncoding(std::string_view css)
{
    const std::string_view form = UnicodeFormOf(css, '@');
    return std::string(form.empty() ? "UTF-8" : form);
}

EncodedText DecodedText(const InputFile& file, Compression compression, bool isStyleSheet)
{
    std::string text = ReadText(file, compression);
    const std::string encoding = isStyleSheet ? StyleSheetEncoding(text) : XmlEncodingOf(text);
    return EncodedText(std::move(text), encoding, MaxXmlSize);
}

/// As XML can have it whatever the encoding.
std::string NumberedCharacter(char32_t character)
{
    return "&#" + std::to_string(static_cast<std::uint32_t>(character)) + ';';
}

std::string AbsoluteName(const std::filesystem::path& document, const std::string& path)
{
    return PathToUtf8(NormalPath(PathIn(document.parent_path(), path)));
}

} // namespace

SvgDocument::SvgDocument(const std::filesystem::path& path, bool isStyleSheet)
    : m_file(path), m_compression(CompressionOf(m_file)), m_isStyleSheet(isStyleSheet),
      m_text(DecodedText(m_file, m_compression, isStyleSheet))
{
    try {
        FindAll(isStyleSheet ? FindCssReferences : FindSvgReferences);
    } catch (const FormatError& error) {
        if (m_compression == Compression::None || !error.Position())
            throw;
        // The position counts in what was packed, not in the file.
        throw FormatError(error.what() + (" at byte " + std::to_string(*error.Position())) +
                          " of the unpacked text");
    }
}

void SvgDocument::FindAll(FindReferences find)
{
    try {
        m_references = find(m_text.Utf8());
    } catch (const FormatError& error) {
        if (!error.Position())
            throw;
        throw FormatError(error.what(), m_text.PlaceOf(*error.Position()));
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
    return PathOfReference(*found, m_file.Path().parent_path());
}

void SvgDocument::Rewrite(const NewPaths& paths)
{
    std::vector<TextEdit> edits;
    for (const UriReference& reference : m_references) {
        const auto wanted = paths.find(reference.id);
        if (wanted == paths.end())
            continue;
        const Span& span = reference.span;
        edits.push_back({span.begin, span.end,
                         TextFor(reference, wanted->second, m_file.Path().parent_path())});
        if (reference.absoluteSpan) {
            const std::string name = AbsoluteName(m_file.Path(), wanted->second);
            edits.push_back({reference.absoluteSpan->begin, reference.absoluteSpan->end,
                             EscapeXmlAttribute(name)});
        }
    }
    Replace(m_text.WithEdits(std::move(edits), m_isStyleSheet ? nullptr : NumberedCharacter));
}

void SvgDocument::Replace(const std::string& bytes)
{
    ReplacementFile replacement(m_file);
    replacement.Write(m_compression == Compression::None ? bytes
                                                         : Compressed(m_compression, bytes));
    replacement.Commit();
}

} // namespace Halvern::Formats::Svg
