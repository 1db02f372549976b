// SPDX-License-Identifier: Apache-2.0

#include "TextScanner.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Wavefront {

namespace {

std::string Beginning(const InputFile& file)
{
    return file.Read(0, std::min<std::uint64_t>(file.Size(), 3));
}

bool IsHigh(std::uint32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLow(std::uint32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

} // namespace

TextForm TextFormOf(const InputFile& file)
{
    const std::string start = Beginning(file);
    if (start.starts_with("\xFF\xFE"))
        return TextForm::Utf16Little;
    return start.starts_with("\xFE\xFF") ? TextForm::Utf16Big : TextForm::Bytes;
}

std::uint64_t MarkSize(const InputFile& file)
{
    if (TextFormOf(file) != TextForm::Bytes)
        return 2;
    return Beginning(file) == "\xEF\xBB\xBF" ? 3 : 0;
}

std::uint64_t SizeInFile(std::string_view text, TextForm form)
{
    if (form == TextForm::Bytes)
        return text.size();
    // A character of four bytes is two units, each other one is one.
    std::uint64_t units = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        units += byte >= 0xF0 ? 2U : (byte & 0xC0U) != 0x80 ? 1U : 0U;
    }
    return 2 * units;
}

std::string InForm(std::string_view text, TextForm form)
{
    if (form == TextForm::Bytes)
        return std::string(text);
    const std::optional<WideString> units = ToUtf16(text);
    if (!units)
        throw FormatError("a path that is no valid text");
    std::string bytes;
    for (const auto unit : *units) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>((unit >> 8) & 0xFF);
        bytes += form == TextForm::Utf16Big ? high : low;
        bytes += form == TextForm::Utf16Big ? low : high;
    }
    return bytes;
}

TextScanner::TextScanner(const InputFile& file)
    : m_form(TextFormOf(file)), m_scanner(file, MarkSize(file))
{}

std::uint32_t TextScanner::NextUnit()
{
    const std::uint64_t begin = m_scanner.Position();
    const std::optional<char> first = m_scanner.Next();
    const std::optional<char> second = m_scanner.Next();
    if (!first || !second)
        throw FormatError("the text ends within a character", begin);
    const auto a = static_cast<unsigned char>(*first);
    const auto b = static_cast<unsigned char>(*second);
    return m_form == TextForm::Utf16Big ? a * 256U + b : b * 256U + a;
}

/// Takes the next character of 16-bit text; false at the end.
bool TextScanner::Fill()
{
    if (!m_rest.empty())
        return true;
    m_taken = 0;
    if (m_scanner.AtEnd())
        return false;
    const std::uint64_t begin = m_scanner.Position();
    const std::uint32_t unit = NextUnit();
    char32_t code = unit;
    if (IsHigh(unit)) {
        const std::uint32_t low = NextUnit();
        code = IsLow(low) ? 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00) : 0;
    }
    if (IsLow(unit) || code == 0)
        throw FormatError("bytes that are no 16-bit text", begin);
    AppendUtf8(m_rest, code);
    m_taken = m_scanner.Position() - begin;
    return true;
}

std::optional<char> TextScanner::Peek()
{
    if (m_form == TextForm::Bytes)
        return m_scanner.Peek();
    return Fill() ? std::optional(m_rest.front()) : std::nullopt;
}

std::optional<char> TextScanner::Next()
{
    if (m_form == TextForm::Bytes)
        return m_scanner.Next();
    if (!Fill())
        return std::nullopt;
    const char c = m_rest.front();
    m_rest.erase(0, 1);
    if (m_rest.empty())
        m_taken = 0;
    return c;
}

bool TextScanner::SkipTo(std::string_view bytes)
{
    if (m_form == TextForm::Bytes)
        return m_scanner.SkipTo(bytes);
    while (const std::optional<char> c = Peek()) {
        if (bytes.find(*c) != std::string_view::npos)
            return true;
        Next();
    }
    return false;
}

} // namespace Halvern::Formats::Wavefront
