// SPDX-License-Identifier: Apache-2.0

#include "StepText.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace Halvern::Formats::Step {

namespace {

int DigitOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// Takes `digits` hexadecimal digits from the front of `rest`, or nothing.
std::optional<char32_t> TakeCode(std::string_view& rest, std::size_t digits)
{
    if (rest.size() < digits)
        return std::nullopt;
    char32_t code = 0;
    for (const char c : rest.substr(0, digits)) {
        const int digit = DigitOf(c);
        if (digit < 0)
            return std::nullopt;
        code = code * 16 + static_cast<char32_t>(digit);
    }
    rest.remove_prefix(digits);
    return code;
}

bool IsSurrogate(char32_t code, char32_t first)
{
    return code >= first && code < first + 0x400;
}

/// The characters of "\X2\" (4 digits each) or "\X4\" (8) up to "\X0\", if they are well formed.
bool TakeCodes(std::string_view& rest, std::size_t digits, std::string& text)
{
    std::string_view left = rest.substr(4);
    std::string codes;
    char32_t high = 0;
    while (!left.starts_with("\\X0\\")) {
        const std::optional<char32_t> code = TakeCode(left, digits);
        if (!code || (high != 0) != IsSurrogate(*code, 0xDC00) || *code > 0x10FFFF)
            return false;
        if (IsSurrogate(*code, 0xD800)) {
            high = *code;
            continue;
        }
        AppendUtf8(codes, high != 0 ? 0x10000 + ((high - 0xD800) << 10) + (*code - 0xDC00) : *code);
        high = 0;
    }
    if (high != 0)
        return false;
    text += codes;
    rest = left.substr(4);
    return true;
}

/// Takes an escape that `rest` begins with; false when it begins none.
bool TakeEscape(std::string_view& rest, std::string& text)
{
    if (rest.starts_with("\\\\")) {
        text.push_back('\\');
        rest.remove_prefix(2);
        return true;
    }
    if (rest.starts_with("\\X2\\") || rest.starts_with("\\X4\\"))
        return TakeCodes(rest, rest[2] == '2' ? 4 : 8, text);
    if (rest.starts_with("\\X\\")) {
        std::string_view left = rest.substr(3);
        const std::optional<char32_t> code = TakeCode(left, 2);
        if (!code)
            return false;
        AppendUtf8(text, *code);
        rest = left;
        return true;
    }
    // The shifted character is an ASCII one.
    if (rest.starts_with("\\S\\") && rest.size() > 3 && rest[3] >= ' ' && rest[3] <= '~') {
        AppendUtf8(text, static_cast<unsigned char>(rest[3]) + 0x80U);
        rest.remove_prefix(4);
        return true;
    }
    // The alphabet for "\S\". Only the first, Latin-1, is known here; names in others are rare.
    if (rest.size() > 3 && rest.starts_with("\\P") && rest[3] == '\\') {
        rest.remove_prefix(4);
        return true;
    }
    return false;
}

bool IsLineBreak(char c)
{
    return c == '\n' || c == '\r';
}

void AppendEscaped(std::string& text, char32_t code)
{
    std::array<char, 24> escape{};
    std::snprintf(escape.data(), escape.size(),
                  code > 0xFFFF ? "\\X4\\%08X\\X0\\" : "\\X2\\%04X\\X0\\",
                  static_cast<unsigned>(code));
    text += escape.data();
}

} // namespace

std::string DecodeString(std::string_view raw)
{
    std::string unwrapped(raw);
    std::erase_if(unwrapped, IsLineBreak);
    const std::string bytes = Utf8OrLatin1(unwrapped);
    std::string text;
    for (std::string_view rest = bytes; !rest.empty();) {
        if (rest.front() == '\\' && TakeEscape(rest, text))
            continue;
        text.push_back(rest.front());
        rest.remove_prefix(rest.starts_with("''") ? 2 : 1);
    }
    return text;
}

std::string EncodeString(std::string_view text)
{
    const std::optional<WideString> units = ToUtf16(text);
    std::string raw;
    char32_t high = 0;
    for (const char32_t unit : units.value_or(WideString())) {
        if (unit < 0x20 || unit == 0x7F)
            throw FormatError("a string of this format cannot hold " + std::string(text));
        if (IsSurrogate(unit, 0xD800)) {
            high = unit;
        } else if (IsSurrogate(unit, 0xDC00)) {
            AppendEscaped(raw, 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00));
        } else if (unit > 0x7F) {
            AppendEscaped(raw, unit);
        } else {
            if (unit == '\'' || unit == '\\')
                raw.push_back(static_cast<char>(unit));
            raw.push_back(static_cast<char>(unit));
        }
    }
    return raw;
}

} // namespace Halvern::Formats::Step
