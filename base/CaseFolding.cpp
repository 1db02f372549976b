// SPDX-License-Identifier: Apache-2.0

#include "base/CaseFolding.h"

#include <array>
#include <cstddef>

#include <utf8proc.h>

namespace Halvern::Base {

namespace {

/// Turkish only: its small letter is a dot more than one character, and no other form is common.
constexpr char32_t CapitalIWithDot = 0x130;

/// The character at `at`, which moves past it.
char32_t NextCharacter(std::u16string_view text, std::size_t& at) noexcept
{
    const char32_t high = text[at++];
    if ((high & 0xFC00U) != 0xD800 || at == text.size() || (text[at] & 0xFC00U) != 0xDC00)
        return high;
    return 0x10000 + ((high & 0x3FFU) << 10) + (text[at++] & 0x3FFU);
}

void Append(std::u16string& text, char32_t character)
{
    if (character >= 0x10000) {
        text.push_back(static_cast<char16_t>(0xD7C0 + (character >> 10)));
        character = 0xDC00 + (character & 0x3FFU);
    }
    text.push_back(static_cast<char16_t>(character));
}

} // namespace

char32_t FoldCase(char32_t character) noexcept
{
    if (character < 0x80)
        return character >= U'A' && character <= U'Z' ? character + 0x20 : character;
    if (character == CapitalIWithDot)
        return character;
    const auto given = static_cast<utf8proc_int32_t>(character);
    std::array<utf8proc_int32_t, 8> folded{};
    int boundary = 0;
    const utf8proc_ssize_t size =
        utf8proc_decompose_char(given, folded.data(), static_cast<utf8proc_ssize_t>(folded.size()),
                                UTF8PROC_CASEFOLD, &boundary);
    // Characters that fold to several keep to those that have a small letter of their own.
    return static_cast<char32_t>(size == 1 ? folded[0] : utf8proc_tolower(given));
}

std::u16string FoldCase(std::u16string_view text)
{
    std::u16string folded;
    folded.reserve(text.size());
    for (std::size_t at = 0; at < text.size();)
        Append(folded, FoldCase(NextCharacter(text, at)));
    return folded;
}

bool IsEqualIgnoringCase(std::u16string_view a, std::u16string_view b) noexcept
{
    return a.size() == b.size() && StartsWithIgnoringCase(a, b);
}

bool StartsWithIgnoringCase(std::u16string_view text, std::u16string_view start) noexcept
{
    if (text.size() < start.size())
        return false;
    text = text.substr(0, start.size());
    for (std::size_t at = 0, other = 0; at < start.size();) {
        if (FoldCase(NextCharacter(start, at)) != FoldCase(NextCharacter(text, other)))
            return false;
    }
    return true;
}

} // namespace Halvern::Base
