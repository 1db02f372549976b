// SPDX-License-Identifier: Apache-2.0

#include "CharacterSet.h"

#include "WindowsApi.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Halvern::Base {

namespace {

/// Names of XML that tell no number. EUC-KR is the part of 949 that old files use, and not every
/// system has a page of its own for it.
constexpr std::pair<std::string_view, UINT> CodePages[] = {
    {"BIG5", 950},     {"EUC-JP", 20932},    {"EUC-KR", 949},    {"GB18030", 54936},
    {"GB2312", 936},   {"GBK", 936},         {"KOI8-R", 20866},  {"KOI8-U", 21866},
    {"LATIN1", 28591}, {"MACINTOSH", 10000}, {"SHIFT_JIS", 932}, {"SHIFT-JIS", 932},
    {"TIS-620", 874},  {"WINDOWS-31J", 932}};

/// Nothing when the rest of the name is no number from 1 on.
std::optional<UINT> NumberAfter(std::string_view name, std::string_view start)
{
    if (!name.starts_with(start) || name.size() - start.size() > 5)
        return {};
    UINT number = 0;
    for (const char c : name.substr(start.size())) {
        if (c < '0' || c > '9')
            return {};
        number = number * 10 + static_cast<UINT>(c - '0');
    }
    return number == 0 ? std::nullopt : std::optional(number);
}

std::optional<UINT> CodePageOf(std::string_view name)
{
    constexpr UINT beforeLatin1 = 28590;
    for (const auto& [known, page] : CodePages)
        if (known == name)
            return page;
    if (const auto part = NumberAfter(name, "ISO-8859-"))
        return beforeLatin1 + *part;
    for (const std::string_view start : {"WINDOWS-", "CP", "IBM"})
        if (const auto page = NumberAfter(name, start))
            return page;
    return {};
}

class CodePage final : public ConvertedSet
{
public:
    explicit CodePage(UINT page) : m_page(page) { LearnSingleBytes(); }

    std::optional<std::string> Encode(char32_t code) const override
    {
        std::array<wchar_t, 2> units{static_cast<wchar_t>(code)};
        const bool isPair = code >= 0x10000;
        if (isPair)
            units = {static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10)),
                     static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FFU))};
        std::array<char, 8> bytes{};
        const int size = WideCharToMultiByte(m_page, 0, units.data(), isPair ? 2 : 1, bytes.data(),
                                             static_cast<int>(bytes.size()), nullptr, nullptr);
        const std::string result(bytes.data(), static_cast<std::size_t>(std::max(size, 0)));
        // Another letter may have been taken for one that is not there.
        const bool isSame = !result.empty() && DecodeWhole(result).code == code;
        return isSame ? std::optional(result) : std::nullopt;
    }

private:
    Character DecodeWhole(std::string_view bytes) const override
    {
        std::array<wchar_t, 4> units{};
        const int count = MultiByteToWideChar(m_page, MB_ERR_INVALID_CHARS, bytes.data(),
                                              static_cast<int>(bytes.size()), units.data(),
                                              static_cast<int>(units.size()));
        const bool isHigh = units[0] >= 0xD800 && units[0] <= 0xDBFF;
        if (count == 1 && (units[0] < 0xD800 || units[0] > 0xDFFF))
            return {units[0], bytes.size()};
        if (count == 2 && isHigh)
            return {0x10000U + ((units[0] - 0xD800U) << 10) + (units[1] - 0xDC00U), bytes.size()};
        return {};
    }

    UINT m_page;
};

} // namespace

std::unique_ptr<CharacterSet> SystemCharacterSet(const std::string& name)
{
    const std::optional<UINT> page = CodePageOf(name);
    return page && IsValidCodePage(*page) ? std::make_unique<CodePage>(*page) : nullptr;
}

} // namespace Halvern::Base
