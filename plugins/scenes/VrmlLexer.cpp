// SPDX-License-Identifier: Apache-2.0

#include "VrmlLexer.h"

#include "StringList.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Scenes {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == ',' || (c >= '\t' && c <= '\r');
}

bool IsBracket(char c)
{
    return c == '[' || c == ']' || c == '{' || c == '}';
}

bool EndsWord(char c)
{
    return IsBlank(c) || IsBracket(c) || c == '"' || c == '#';
}

} // namespace

/// Over comments, too; false at the end.
bool VrmlLexer::SkipBlanks()
{
    while (m_at < m_text.size()) {
        if (m_text[m_at] == '#')
            m_at = std::min(m_text.find_first_of("\r\n", m_at), m_text.size());
        else if (IsBlank(m_text[m_at]))
            ++m_at;
        else
            return true;
    }
    return false;
}

VrmlToken VrmlLexer::Token(VrmlToken::Kind kind, std::size_t begin, std::size_t end) const
{
    return {kind, {begin, end}, m_text.substr(begin, end - begin)};
}

VrmlToken VrmlLexer::Next()
{
    if (!SkipBlanks())
        return Token(VrmlToken::Kind::End, m_text.size(), m_text.size());
    const std::size_t begin = m_at;
    if (IsBracket(m_text[begin]))
        return Token(VrmlToken::Kind::Bracket, begin, ++m_at);
    if (m_text[begin] == '"') {
        const std::size_t end = EndOfString(m_text, begin + 1);
        if (end == m_text.size())
            throw FormatError("a string without an end", begin);
        m_at = end + 1;
        return Token(VrmlToken::Kind::String, begin + 1, end);
    }
    while (m_at < m_text.size() && !EndsWord(m_text[m_at]))
        ++m_at;
    return Token(VrmlToken::Kind::Word, begin, m_at);
}

} // namespace Halvern::Formats::Scenes
