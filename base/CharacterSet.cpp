// SPDX-License-Identifier: Apache-2.0

#include "CharacterSet.h"

#include <algorithm>
#include <array>

namespace Halvern::Base {

namespace {

constexpr std::size_t LongestName = 40;

bool IsSurrogate(char32_t code)
{
    return code >= 0xD800 && code <= 0xDFFF;
}

class UnicodeForm : public CharacterSet
{
public:
    UnicodeForm(std::size_t unitSize, bool isBigEndian)
        : m_unitSize(unitSize), m_isBigEndian(isBigEndian)
    {}

    Character Decode(std::string_view bytes) const override
    {
        if (bytes.size() < m_unitSize)
            return {};
        const char32_t first = Unit(bytes);
        if (!IsSurrogate(first))
            return first > 0x10FFFF ? Character() : Character{first, m_unitSize};
        if (m_unitSize == 4 || first > 0xDBFF || bytes.size() < 2 * m_unitSize)
            return {};
        const char32_t second = Unit(bytes.substr(m_unitSize));
        if (second < 0xDC00 || second > 0xDFFF)
            return {};
        return {0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00), 2 * m_unitSize};
    }

    std::optional<std::string> Encode(char32_t code) const override
    {
        if (m_unitSize == 4 || code < 0x10000)
            return Bytes(code);
        const char32_t rest = code - 0x10000;
        return Bytes(0xD800 + (rest >> 10)) + Bytes(0xDC00 + (rest & 0x3FFU));
    }

private:
    char32_t Unit(std::string_view bytes) const
    {
        char32_t unit = 0;
        for (std::size_t i = 0; i < m_unitSize; ++i) {
            const char byte = bytes[m_isBigEndian ? i : m_unitSize - 1 - i];
            unit = (unit << 8) | static_cast<unsigned char>(byte);
        }
        return unit;
    }

    std::string Bytes(char32_t unit) const
    {
        std::string bytes(m_unitSize, '\0');
        for (std::size_t i = 0; i < m_unitSize; ++i)
            bytes[m_isBigEndian ? m_unitSize - 1 - i : i] =
                static_cast<char>((unit >> (8 * i)) & 0xFFU);
        return bytes;
    }

    std::size_t m_unitSize;
    bool m_isBigEndian;
};

bool IsNameCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
}

/// Letters, digits and what marks up a text.
bool IsForAscii(const CharacterSet& set)
{
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                         "0123456789 \t\r\n!\"#%&'()*+,-./:;<=>?@[]_";
    return std::all_of(letters.begin(), letters.end(), [&](char c) {
        const Character found = set.Decode({&c, 1});
        return found.size == 1 && found.code == static_cast<unsigned char>(c) &&
               set.Encode(found.code) == std::string(1, c);
    });
}

/// Bytes mean one thing or another there, by what is in front of them.
bool HasStates(std::string_view name)
{
    return name.starts_with("ISO-2022") || name.starts_with("UTF-7") || name.starts_with("HZ");
}

} // namespace

void ConvertedSet::LearnSingleBytes()
{
    for (std::size_t byte = 0; byte < m_single.size(); ++byte)
        m_single[byte] = DecodeWhole(std::string(1, static_cast<char>(byte)));
}

Character ConvertedSet::Decode(std::string_view bytes) const
{
    const Character& single = m_single[static_cast<unsigned char>(bytes.front())];
    for (std::size_t size = 2; single.size == 0 && size <= std::min(bytes.size(), MaxCharacterSize);
         ++size)
        if (const Character found = DecodeWhole(bytes.substr(0, size)); found.size > 0)
            return found;
    return single;
}

std::unique_ptr<CharacterSet> CharacterSetOf(std::string_view given)
{
    std::string name(given);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    if (name == "UTF-16LE" || name == "UTF-16BE")
        return std::make_unique<UnicodeForm>(2, name.ends_with("BE"));
    if (name == "UTF-32LE" || name == "UTF-32BE")
        return std::make_unique<UnicodeForm>(4, name.ends_with("BE"));
    if (name.empty() || name.size() > LongestName || HasStates(name) ||
        !std::all_of(name.begin(), name.end(), IsNameCharacter))
        return nullptr;
    std::unique_ptr<CharacterSet> set = SystemCharacterSet(name);
    return set && IsForAscii(*set) ? std::move(set) : nullptr;
}

} // namespace Halvern::Base
