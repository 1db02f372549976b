// SPDX-License-Identifier: Apache-2.0

#include "SceneText.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/Xml.h"

#include <algorithm>
#include <cstdint>

namespace Halvern::Formats::Scenes {

namespace {

std::string Load(const InputFile& file, Compression compression)
{
    if (compression != Compression::None)
        return ReadDecompressed(
            file, std::min<std::uint64_t>(MaxXmlSize, DecompressedLimit(file.Size())));
    if (file.Size() > MaxXmlSize)
        throw FormatError("the document is larger than 256 MiB");
    return file.Read(0, file.Size());
}

bool LooksLikeXml(std::string_view bytes)
{
    if (!UnicodeFormOf(bytes, '<').empty())
        return true;
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && bytes[first] == '<';
}

EncodedText Decoded(std::string bytes, bool& isXml)
{
    isXml = LooksLikeXml(bytes);
    const std::string encoding = isXml ? XmlEncodingOf(bytes) : "UTF-8";
    return EncodedText(std::move(bytes), encoding, MaxXmlSize);
}

/// As XML can have it whatever the encoding.
std::string NumberedCharacter(char32_t character)
{
    return "&#" + std::to_string(static_cast<std::uint32_t>(character)) + ';';
}

} // namespace

SceneText::SceneText(const std::filesystem::path& path)
    : m_file(path), m_compression(CompressionOf(m_file)),
      m_text(Decoded(Load(m_file, m_compression), m_isXml))
{}

void SceneText::Read(const std::function<void(std::string_view text)>& read) const
{
    try {
        read(m_text.Utf8());
    } catch (const FormatError& error) {
        if (!error.Position())
            throw;
        const std::uint64_t place = m_text.PlaceOf(static_cast<std::size_t>(*error.Position()));
        if (m_compression == Compression::None)
            throw FormatError(error.what(), place);
        throw FormatError(error.what() + (" at byte " + std::to_string(place)) +
                          " of the unpacked text");
    }
}

void SceneText::Replace(std::vector<TextEdit> edits)
{
    const std::string bytes =
        m_text.WithEdits(std::move(edits), m_isXml ? NumberedCharacter : nullptr);
    ReplacementFile replacement(m_file);
    replacement.Write(m_compression == Compression::None ? bytes
                                                         : Compressed(m_compression, bytes));
    replacement.Commit();
}

} // namespace Halvern::Formats::Scenes
