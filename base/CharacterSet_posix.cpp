// SPDX-License-Identifier: Apache-2.0

#include "CharacterSet.h"

#include <array>
#include <iconv.h>

namespace Halvern::Base {

namespace {

constexpr const char* CodePoints = "UTF-32BE";

/// A converter of the system's library.
class Converter
{
public:
    Converter(const char* to, const char* from) : m_handle(iconv_open(to, from)) {}
    ~Converter()
    {
        if (IsKnown())
            iconv_close(m_handle);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // NOLINTNEXTLINE(performance-no-int-to-ptr): it is how the library says so
    bool IsKnown() const { return m_handle != reinterpret_cast<iconv_t>(-1); }

    /// All of `from`, or nothing.
    std::optional<std::string> Convert(std::string_view from) const
    {
        std::array<char, 32> result{};
        char* source = const_cast<char*>(from.data()); // is only read
        std::size_t left = from.size();
        char* target = result.data();
        std::size_t room = result.size();
        iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        // What could only be approximated is counted.
        if (iconv(m_handle, &source, &left, &target, &room) != 0 || left != 0)
            return {};
        iconv(m_handle, nullptr, nullptr, &target, &room);
        return std::string(result.data(), result.size() - room);
    }

private:
    iconv_t m_handle;
};

char32_t CodePoint(std::string_view bytes)
{
    char32_t code = 0;
    for (const char byte : bytes)
        code = (code << 8) | static_cast<unsigned char>(byte);
    return code;
}

class IconvSet final : public ConvertedSet
{
public:
    explicit IconvSet(const std::string& name)
        : m_decoder(CodePoints, name.c_str()), m_encoder(name.c_str(), CodePoints)
    {
        if (IsKnown())
            LearnSingleBytes();
    }

    bool IsKnown() const { return m_decoder.IsKnown() && m_encoder.IsKnown(); }

    std::optional<std::string> Encode(char32_t code) const override
    {
        std::string bytes;
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<char>((code >> shift) & 0xFFU));
        return m_encoder.Convert(bytes);
    }

private:
    Character DecodeWhole(std::string_view bytes) const override
    {
        const std::optional<std::string> code = m_decoder.Convert(bytes);
        return code && code->size() == 4 ? Character{CodePoint(*code), bytes.size()} : Character();
    }

    Converter m_decoder;
    Converter m_encoder;
};

} // namespace

std::unique_ptr<CharacterSet> SystemCharacterSet(const std::string& name)
{
    auto set = std::make_unique<IconvSet>(name);
    return set->IsKnown() ? std::move(set) : nullptr;
}

} // namespace Halvern::Base
