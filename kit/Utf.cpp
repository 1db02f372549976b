// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/Utf.h"

#include <cstdint>

namespace Halvern::PluginKit {

namespace {

constexpr char32_t Invalid = 0xFFFFFFFF;
constexpr char32_t Replacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Length of the sequence that a lead byte opens; 0 for a byte that opens none.
std::size_t SequenceLength(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// The code point at `at`, which moves behind it; Invalid moves by one byte.
char32_t NextCodePoint(std::string_view text, std::size_t& at)
{
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = SequenceLength(lead);
    const std::size_t start = at++;
    if (length == 0 || length > text.size() - start)
        return Invalid;
    if (length == 1)
        return lead;
    char32_t code = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[start + i]);
        if ((byte & 0xC0U) != 0x80)
            return Invalid;
        code = (code << 6) | (byte & 0x3FU);
    }
    const char32_t smallest = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    if (code < smallest || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return Invalid;
    at = start + length;
    return code;
}

/// The same for UTF-16: Invalid, a lone surrogate, moves by one unit.
char32_t NextCodePoint(WideView text, std::size_t& at)
{
    const char32_t code = text[at++];
    if (IsLowSurrogate(code))
        return Invalid;
    if (!IsHighSurrogate(code))
        return code;
    if (at == text.size() || !IsLowSurrogate(text[at]))
        return Invalid;
    return 0x10000 + ((code - 0xD800) << 10) + (text[at++] - 0xDC00U);
}

void AppendUtf16(WideString& text, char32_t code)
{
    using Unit = SyncPlugin::WideChar;
    if (code < 0x10000) {
        text.push_back(static_cast<Unit>(code));
        return;
    }
    text.push_back(static_cast<Unit>(0xD800 + ((code - 0x10000) >> 10)));
    text.push_back(static_cast<Unit>(0xDC00 + ((code - 0x10000) & 0x3FFU)));
}

} // namespace

void AppendUtf8(std::string& text, char32_t code)
{
    const auto tail = [&](int shift) {
        text.push_back(static_cast<char>(0x80U | ((code >> shift) & 0x3FU)));
    };
    if (code < 0x80) {
        text.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        text.push_back(static_cast<char>(0xC0U | (code >> 6)));
        tail(0);
    } else if (code < 0x10000) {
        text.push_back(static_cast<char>(0xE0U | (code >> 12)));
        tail(6);
        tail(0);
    } else {
        text.push_back(static_cast<char>(0xF0U | (code >> 18)));
        tail(12);
        tail(6);
        tail(0);
    }
}

std::optional<std::string> ToUtf8(WideView text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t code = NextCodePoint(text, at);
        if (code == Invalid)
            return std::nullopt;
        AppendUtf8(result, code);
    }
    return result;
}

std::string ToUtf8Lossy(WideView text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t code = NextCodePoint(text, at);
        AppendUtf8(result, code == Invalid ? Replacement : code);
    }
    return result;
}

std::optional<WideString> ToUtf16(std::string_view text)
{
    WideString result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t code = NextCodePoint(text, at);
        if (code == Invalid)
            return std::nullopt;
        AppendUtf16(result, code);
    }
    return result;
}

WideString ToUtf16Lossy(std::string_view text)
{
    WideString result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t code = NextCodePoint(text, at);
        AppendUtf16(result, code == Invalid ? Replacement : code);
    }
    return result;
}

bool IsUtf8(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        if (NextCodePoint(text, at) == Invalid)
            return false;
    }
    return true;
}

std::string Utf8OrLatin1(std::string_view bytes)
{
    if (IsUtf8(bytes))
        return std::string(bytes);
    std::string text;
    for (const char byte : bytes)
        AppendUtf8(text, static_cast<unsigned char>(byte));
    return text;
}

std::filesystem::path PathFromUtf8(std::string_view text)
{
    // Where names are UTF-16, making one of what is no UTF-8 would throw without saying which.
    if constexpr (sizeof(std::filesystem::path::value_type) > 1)
        return std::filesystem::path(ToUtf16Lossy(text));
    else
        return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

std::string PathToUtf8(const std::filesystem::path& path)
{
    if constexpr (sizeof(std::filesystem::path::value_type) > 1)
        return ToUtf8Lossy(path.generic_string<SyncPlugin::WideChar>());
    else
        return path.generic_string();
}

} // namespace Halvern::PluginKit
