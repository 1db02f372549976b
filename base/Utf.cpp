// SPDX-License-Identifier: Apache-2.0

#include "base/Utf.h"

#include <cstddef>
#include <iterator>

#include <utf8.h>

namespace Halvern::Base {

namespace {

constexpr char16_t Replacement = 0xFFFD;

bool IsHighSurrogate(char16_t unit)
{
    return (unit & 0xFC00U) == 0xD800;
}

bool IsLowSurrogate(char16_t unit)
{
    return (unit & 0xFC00U) == 0xDC00;
}

/// Where the first lone surrogate is, from `at` on; the end when there is none.
std::size_t FindLoneSurrogate(std::u16string_view text, std::size_t at)
{
    for (; at < text.size(); ++at) {
        if (IsHighSurrogate(text[at]) && at + 1 < text.size() && IsLowSurrogate(text[at + 1]))
            ++at;
        else if (IsHighSurrogate(text[at]) || IsLowSurrogate(text[at]))
            break;
    }
    return at;
}

void AppendHex(std::string& text, std::string_view mark, unsigned value, int digits)
{
    text += mark;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += "0123456789ABCDEF"[(value >> shift) & 0xFU];
}

} // namespace

std::optional<std::string> ToUtf8(std::u16string_view text)
{
    if (FindLoneSurrogate(text, 0) != text.size())
        return std::nullopt;
    std::string result;
    result.reserve(text.size());
    utf8::unchecked::utf16to8(text.begin(), text.end(), std::back_inserter(result));
    return result;
}

std::string ToUtf8Lossy(std::u16string_view text)
{
    std::u16string sound(text);
    for (std::size_t at = FindLoneSurrogate(text, 0); at < text.size();
         at = FindLoneSurrogate(text, at + 1))
        sound[at] = Replacement;
    return ToUtf8(sound).value_or(std::string());
}

std::optional<std::u16string> ToUtf16(std::string_view text)
{
    if (!IsUtf8(text))
        return std::nullopt;
    return ToUtf16Lossy(text);
}

std::u16string ToUtf16Lossy(std::string_view text)
{
    std::u16string result;
    result.reserve(text.size());
    for (const char *at = text.data(), *const end = at + text.size(); at != end;) {
        const char* const invalid = utf8::find_invalid(at, end);
        utf8::unchecked::utf8to16(at, invalid, std::back_inserter(result));
        at = invalid;
        if (at == end)
            break;
        result.push_back(Replacement);
        ++at;
    }
    return result;
}

std::string EscapedUtf8(std::string_view text)
{
    std::string result;
    for (const char *at = text.data(), *const end = at + text.size(); at != end; ++at) {
        const char* const invalid = utf8::find_invalid(at, end);
        result.append(at, invalid);
        at = invalid;
        if (at == end)
            break;
        AppendHex(result, "\\x", static_cast<unsigned char>(*at), 2);
    }
    return result;
}

std::string EscapedUtf8(std::u16string_view text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t lone = FindLoneSurrogate(text, at);
        utf8::unchecked::utf16to8(text.begin() + at, text.begin() + lone,
                                  std::back_inserter(result));
        at = lone;
        if (at < text.size())
            AppendHex(result, "\\u", text[at], 4);
    }
    return result;
}

bool IsUtf8(std::string_view text)
{
    return utf8::is_valid(text.begin(), text.end());
}

void AppendUtf8(std::string& text, char32_t code)
{
    utf8::unchecked::append(code, std::back_inserter(text));
}

} // namespace Halvern::Base
