// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Address.h"

#include <cstddef>
#include <string_view>

namespace Halvern::Formats::Scenes {

struct VrmlToken
{
    enum class Kind
    {
        End,
        /// A name, a keyword or a number.
        Word,
        /// Its bytes are those between the quotation marks.
        String,
        /// One of "[]{}".
        Bracket
    };

    Kind kind = Kind::End;
    Span span;
    std::string_view text;
};

/// Goes through VRML or X3D in the classic encoding, whatever its version.
class VrmlLexer
{
public:
    explicit VrmlLexer(std::string_view text) : m_text(text) {}

    /// Throws a FormatError for a string without an end.
    VrmlToken Next();

private:
    bool SkipBlanks();
    VrmlToken Token(VrmlToken::Kind kind, std::size_t begin, std::size_t end) const;

    std::string_view m_text;
    std::size_t m_at = 0;
};

} // namespace Halvern::Formats::Scenes
