// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Base {

/// A character and the bytes that it has in a text.
struct Character
{
    char32_t code = 0;
    std::size_t size = 0;
};

/// An encoding in which every character stands for itself, whatever is in front of it.
class CharacterSet
{
public:
    virtual ~CharacterSet() = default;
    /// The character at the beginning of `bytes`, which are not empty; its size is 0 when there is
    /// none.
    virtual Character Decode(std::string_view bytes) const = 0;
    /// Nothing for a character that the encoding has not.
    virtual std::optional<std::string> Encode(char32_t code) const = 0;
};

inline constexpr std::size_t MaxCharacterSize = 4;

/// One that the system converts, character by character.
class ConvertedSet : public CharacterSet
{
public:
    Character Decode(std::string_view bytes) const final;

protected:
    /// What single bytes mean is asked once. Required before Decode.
    void LearnSingleBytes();
    /// A character that has all of these bytes.
    virtual Character DecodeWhole(std::string_view bytes) const = 0;

private:
    std::array<Character, 256> m_single;
};

/// Those of Unicode, and others that the system knows. Null for a name that is not known, and for
/// an encoding in which ASCII is something else.
std::unique_ptr<CharacterSet> CharacterSetOf(std::string_view name);

/// What the system converts. Null for a name that it does not know. The name consists of letters,
/// digits, ".", "_" and "-".
std::unique_ptr<CharacterSet> SystemCharacterSet(const std::string& name);

} // namespace Halvern::Base
