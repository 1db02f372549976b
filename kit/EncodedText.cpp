// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/EncodedText.h"

#include "base/CharacterSet.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <stdexcept>

namespace Halvern::PluginKit {

namespace {

bool IsUtf8Name(std::string_view name)
{
    std::string upper(name);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return upper == "UTF-8" || upper == "UTF8";
}

/// How many bytes the character has in UTF-8.
std::size_t Utf8Size(char32_t code)
{
    return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

/// The characters of a text, one after the other, with their places in both forms.
class Walk
{
public:
    Walk(std::string_view bytes, const Base::CharacterSet& set) : m_bytes(bytes), m_set(set) {}

    bool AtEnd() const { return m_place == m_bytes.size(); }
    std::size_t Place() const { return m_place; }
    std::size_t Position() const { return m_position; }

    /// Takes the next one.
    char32_t Next()
    {
        const Base::Character character = m_set.Decode(m_bytes.substr(m_place));
        if (character.size == 0)
            throw FormatError("bytes that are no character in the text's encoding", m_place);
        m_place += character.size;
        m_position += Utf8Size(character.code);
        return character.code;
    }

    /// The place of a byte of UTF-8, or of what follows.
    std::size_t GoTo(std::size_t position)
    {
        while (m_position < position && !AtEnd())
            Next();
        return m_place;
    }

private:
    std::string_view m_bytes;
    const Base::CharacterSet& m_set;
    std::size_t m_place = 0;
    std::size_t m_position = 0;
};

/// The character at the beginning of UTF-8 that is none otherwise; takes it.
char32_t TakeCharacter(std::string_view& text)
{
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t size = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    char32_t code = size == 1 ? first : first & (0x7FU >> size);
    for (const char c : text.substr(1, size - 1))
        code = (code << 6) | (static_cast<unsigned char>(c) & 0x3FU);
    text.remove_prefix(size);
    return code;
}

} // namespace

EncodedText::EncodedText(std::string bytes, std::string_view encoding, std::size_t maxSize)
    : m_bytes(std::move(bytes))
{
    const auto requireRoom = [maxSize](std::size_t size) {
        if (size > maxSize)
            throw FormatError("a text of more than " + std::to_string(maxSize) + " bytes in UTF-8");
    };
    requireRoom(IsUtf8Name(encoding) ? m_bytes.size() : 0);
    if (IsUtf8Name(encoding))
        return;
    m_set = Base::CharacterSetOf(encoding);
    if (!m_set)
        throw FormatError("the encoding " + std::string(encoding.substr(0, 40)) + " is not read",
                          0);
    for (Walk walk(m_bytes, *m_set); !walk.AtEnd(); requireRoom(m_utf8.size()))
        AppendUtf8(m_utf8, walk.Next());
}

EncodedText::~EncodedText() = default;
EncodedText::EncodedText(EncodedText&&) noexcept = default;
EncodedText& EncodedText::operator=(EncodedText&&) noexcept = default;

std::size_t EncodedText::PlaceOf(std::size_t position) const
{
    if (!m_set)
        return position;
    Walk walk(m_bytes, *m_set);
    // Not behind the character that the byte belongs to.
    while (position < m_utf8.size() &&
           (static_cast<unsigned char>(m_utf8[position]) & 0xC0U) == 0x80)
        --position;
    return walk.GoTo(position);
}

std::string EncodedText::Encoded(std::string_view text, Substitute substitute) const
{
    if (!IsUtf8(text))
        throw FormatError("a path that is no valid text");
    std::string result;
    while (!text.empty()) {
        const char32_t code = TakeCharacter(text);
        const std::optional<std::string> bytes = m_set->Encode(code);
        if (!bytes && !substitute)
            throw FormatError("the text's encoding has no character " +
                              std::to_string(static_cast<std::uint32_t>(code)));
        result += bytes ? *bytes : Encoded(substitute(code), nullptr);
    }
    return result;
}

std::string EncodedText::WithEdits(std::vector<TextEdit> edits, Substitute substitute) const
{
    if (!m_set)
        return ApplyEdits(m_bytes, std::move(edits));
    std::stable_sort(edits.begin(), edits.end(),
                     [](const TextEdit& a, const TextEdit& b) { return a.begin < b.begin; });
    Walk walk(m_bytes, *m_set);
    for (TextEdit& edit : edits) {
        const std::size_t begin = walk.GoTo(edit.begin);
        const bool isBegin = walk.Position() == edit.begin;
        const std::size_t end = walk.GoTo(edit.end);
        if (!isBegin || walk.Position() != edit.end)
            throw std::invalid_argument("edits overlap, split a character or lie outside the text");
        edit = {begin, end, Encoded(edit.replacement, substitute)};
    }
    return ApplyEdits(m_bytes, std::move(edits));
}

std::string_view UnicodeFormOf(std::string_view bytes, char first)
{
    const auto starts = [&](std::string_view with) { return bytes.starts_with(with); };
    const char wide[] = {0, 0, 0, first, 0, 0, 0};
    using namespace std::string_view_literals;
    if (starts("\0\0\xFE\xFF"sv) || starts({wide, 4}))
        return "UTF-32BE";
    if (starts("\xFF\xFE\0\0"sv) || starts({wide + 3, 4}))
        return "UTF-32LE";
    if (starts("\xFE\xFF"sv) || starts({wide + 2, 2}))
        return "UTF-16BE";
    if (starts("\xFF\xFE"sv) || starts({wide + 3, 2}))
        return "UTF-16LE";
    return {};
}

} // namespace Halvern::PluginKit
