// SPDX-License-Identifier: Apache-2.0

#include "DxfText.h"

#include "KitNames.h"
#include "pluginkit/EncodedText.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <utility>

namespace Halvern::Formats::Dxf {

namespace {

constexpr std::string_view Utf8 = "UTF-8";
constexpr std::string_view Usual = "CP1252";
constexpr std::string_view FirstInUtf8 = "AC1021";
constexpr std::string_view Johab = "CP1361";
/// How that page shows the byte of a backslash: converters take it for the sign, paths do not.
constexpr std::string_view Won = "\xE2\x82\xA9";

std::string Upper(std::string_view text)
{
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return upper;
}

std::string EncodingOf(std::string_view codePage)
{
    constexpr std::array<std::pair<std::string_view, std::string_view>, 10> names = {
        {{"", Usual},
         {"ASCII", Usual},
         {"UTF-8", Utf8},
         {"UTF8", Utf8},
         {"ANSI_1200", Utf8},
         {"MAC-ROMAN", "MACINTOSH"},
         {"BIG5", "CP950"},
         {"GB2312", "CP936"},
         {"KSC5601", "CP949"},
         {"JOHAB", Johab}}};
    const std::string name = Upper(codePage);
    for (const auto& [known, encoding] : names) {
        if (known == name)
            return std::string(encoding);
    }
    for (const std::string_view start : {"ANSI_", "DOS"}) {
        if (name.starts_with(start))
            return "CP" + name.substr(start.size());
    }
    for (const std::string_view start : {"ISO8859-", "ISO_8859-"}) {
        if (name.starts_with(start))
            return "ISO-8859-" + name.substr(start.size());
    }
    return name;
}

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string WithBackslashes(std::string_view text)
{
    std::string path;
    while (true) {
        const std::size_t end = text.find(Won);
        path.append(text.substr(0, end));
        if (end == std::string_view::npos)
            return path;
        path.push_back('\\');
        text.remove_prefix(end + Won.size());
    }
}

std::string Decoded(std::string_view raw, std::string_view encoding)
{
    if (!IsAscii(raw) && encoding != Utf8) {
        try {
            std::string text = EncodedText(std::string(raw), encoding, 4 * raw.size()).Utf8();
            return encoding == Johab ? WithBackslashes(text) : text;
        } catch (const FormatError&) {
            // A page that nobody knows, or bytes of another one.
        }
    }
    return Utf8OrLatin1(raw);
}

std::optional<unsigned> HexAt(std::string_view text, std::size_t begin, std::size_t digits)
{
    if (text.size() < begin + digits)
        return std::nullopt;
    unsigned number = 0;
    for (const char c : text.substr(begin, digits)) {
        const char upper = c >= 'a' && c <= 'f' ? static_cast<char>(c - 32) : c;
        if (upper >= '0' && upper <= '9')
            number = number * 16 + static_cast<unsigned>(upper - '0');
        else if (upper >= 'A' && upper <= 'F')
            number = number * 16 + static_cast<unsigned>(upper - 'A' + 10);
        else
            return std::nullopt;
    }
    return number;
}

bool IsHigh(unsigned unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLow(unsigned unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

constexpr std::string_view UnicodeMark = "\\U+";
constexpr std::size_t UnicodeSize = 7;

/// Takes "\U+00F6", or a pair of them, off the front of `rest`; false when that is none.
bool TakeUnicode(std::string_view& rest, std::string& text)
{
    const auto unitAt = [&](std::size_t begin) -> std::optional<unsigned> {
        const std::string_view escape = rest.substr(std::min(begin, rest.size()));
        if (!escape.starts_with(UnicodeMark))
            return std::nullopt;
        return HexAt(escape, UnicodeMark.size(), 4);
    };
    const std::optional<unsigned> unit = unitAt(0);
    if (!unit || *unit == 0 || IsLow(*unit))
        return false;
    if (!IsHigh(*unit)) {
        AppendUtf8(text, *unit);
        rest.remove_prefix(UnicodeSize);
        return true;
    }
    const std::optional<unsigned> low = unitAt(UnicodeSize);
    if (!low || !IsLow(*low))
        return false;
    AppendUtf8(text, 0x10000 + ((*unit - 0xD800) << 10) + (*low - 0xDC00));
    rest.remove_prefix(2 * UnicodeSize);
    return true;
}

/// The same for "\M+1967E": the number of a code page, and a character of it.
bool TakeMultiByte(std::string_view& rest, std::string& text)
{
    constexpr std::array<std::string_view, 5> pages = {"CP932", "CP950", "CP949", "CP1361",
                                                       "CP936"};
    if (!rest.starts_with("\\M+") || rest.size() < 8 || rest[3] < '1' || rest[3] > '5')
        return false;
    const std::optional<unsigned> code = HexAt(rest, 4, 4);
    if (!code)
        return false;
    const std::string bytes = {static_cast<char>(*code >> 8), static_cast<char>(*code & 0xFFU)};
    try {
        const auto page = static_cast<std::size_t>(rest[3] - '1');
        text += EncodedText(bytes, pages[page], 16).Utf8();
    } catch (const FormatError&) {
        return false;
    }
    rest.remove_prefix(8);
    return true;
}

/// For a character that a code page has not.
std::string Escaped(char32_t character)
{
    std::array<char, 16> escape{};
    const auto unit = [&](char32_t code) {
        std::snprintf(escape.data(), escape.size(), "\\U+%04X", static_cast<unsigned>(code));
        return std::string(escape.data());
    };
    if (character < 0x10000)
        return unit(character);
    const char32_t rest = character - 0x10000;
    return unit(0xD800 + (rest >> 10)) + unit(0xDC00 + (rest & 0x3FFU));
}

/// All that is not ASCII, for a page that nobody knows.
std::string AllEscaped(std::string_view text)
{
    std::string escaped;
    char32_t high = 0;
    const std::optional<WideString> units = ToUtf16(text);
    for (const char32_t unit : units.value_or(WideString())) {
        if (IsHigh(unit)) {
            high = unit;
        } else if (IsLow(unit)) {
            escaped += Escaped(0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00));
        } else if (unit >= 0x80) {
            escaped += Escaped(unit);
        } else {
            escaped.push_back(static_cast<char>(unit));
        }
    }
    return escaped;
}

std::string Encoded(std::string_view text, std::string_view encoding)
{
    // One letter gives way to the text: the kit converts what it puts into a text.
    return EncodedText("x", encoding, 16).WithEdits({{0, 1, std::string(text)}}, Escaped);
}

/// What lies between backslashes: some converters have none in this page.
std::string InPieces(std::string_view text, std::string_view encoding)
{
    std::string encoded;
    while (true) {
        const std::size_t end = text.find('\\');
        if (const std::string_view piece = text.substr(0, end); !piece.empty())
            encoded += Encoded(piece, encoding);
        if (end == std::string_view::npos)
            return encoded;
        encoded.push_back('\\');
        text.remove_prefix(end + 1);
    }
}

void RequireOneLine(std::string_view text)
{
    if (std::any_of(text.begin(), text.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }))
        throw FormatError("a drawing cannot hold the path " + std::string(text));
}

} // namespace

DxfText::DxfText(std::string_view version, std::string_view codePage)
    // Versions are compared as texts: AC1009, AC1012, ... AC1032, and MC0.0 and AC2.10 of old.
    : m_encoding(version.starts_with("AC1") && version.size() == FirstInUtf8.size() &&
                         version >= FirstInUtf8
                     ? std::string(Utf8)
                     : EncodingOf(codePage))
{}

std::string DxfText::Decode(std::string_view raw) const
{
    const std::string decoded = Decoded(raw, m_encoding);
    std::string text;
    for (std::string_view rest = decoded; !rest.empty();) {
        if (rest.front() == '\\' && (TakeUnicode(rest, text) || TakeMultiByte(rest, text)))
            continue;
        text.push_back(rest.front());
        rest.remove_prefix(rest.starts_with("^ ") ? 2 : 1);
    }
    return text;
}

std::string DxfText::Encode(std::string_view text) const
{
    RequireOneLine(text);
    std::string marked;
    for (const char c : text) {
        marked.push_back(c);
        if (c == '^')
            marked.push_back(' ');
    }
    if (m_encoding == Utf8 || IsAscii(marked))
        return marked;
    try {
        return m_encoding == Johab ? InPieces(marked, m_encoding) : Encoded(marked, m_encoding);
    } catch (const FormatError&) {
        return AllEscaped(marked);
    }
}

} // namespace Halvern::Formats::Dxf
