// SPDX-License-Identifier: Apache-2.0

#include "ScadLexer.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::OpenScad {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsNameCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '$';
}

int DigitOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

void Append(Token& token, char c)
{
    if (token.text.size() < ScadLexer::MaxText)
        token.text.push_back(c);
    else
        token.isCut = true;
}

void AppendCode(Token& token, char32_t code)
{
    std::string bytes;
    AppendUtf8(bytes, code);
    for (const char byte : bytes)
        Append(token, byte);
}

std::uint64_t MarkSize(const InputFile& file)
{
    const std::string start = file.Read(0, std::min<std::uint64_t>(file.Size(), 3));
    return start == "\xEF\xBB\xBF" ? start.size() : 0;
}

} // namespace

ScadLexer::ScadLexer(const InputFile& file) : m_scanner(file, MarkSize(file)) {}

/// Leaves at the beginning of a token, or of nothing; says whether a lone "/" was met.
bool ScadLexer::SkipBlanksAndComments()
{
    while (const std::optional<char> c = m_scanner.Peek()) {
        if (IsBlank(*c)) {
            m_scanner.Next();
            continue;
        }
        if (*c != '/')
            return false;
        const std::uint64_t begin = m_scanner.Position();
        m_scanner.Next();
        const std::optional<char> second = m_scanner.Peek();
        if (second == '/')
            m_scanner.SkipTo("\n");
        else if (second == '*')
            m_scanner.SkipBlockComment(begin);
        else
            return true;
    }
    return false;
}

Token ScadLexer::Next()
{
    const bool slash = SkipBlanksAndComments();
    Token token;
    token.begin = m_scanner.Position();
    if (slash) {
        token.kind = TokenKind::Other;
        token.text = "/";
        token.end = token.begin--;
        return token;
    }
    const std::optional<char> c = m_scanner.Peek();
    if (!c)
        return token;
    if (c == '"')
        return ReadString();
    if (IsNameCharacter(*c))
        return ReadName();
    m_scanner.Next();
    token.kind = TokenKind::Other;
    token.text = *c;
    if (c == '=' && m_scanner.Peek() == '=') {
        m_scanner.Next();
        token.text = "==";
    }
    token.end = m_scanner.Position();
    return token;
}

Token ScadLexer::ReadString()
{
    Token token;
    token.kind = TokenKind::String;
    m_scanner.Next();
    token.begin = m_scanner.Position();
    while (const std::optional<char> c = m_scanner.Next()) {
        if (c == '"') {
            token.end = m_scanner.Position() - 1;
            return token;
        }
        if (c == '\\')
            ReadEscape(token);
        else
            Append(token, *c);
    }
    throw FormatError("a string without an end", token.begin - 1);
}

void ScadLexer::ReadEscape(Token& token)
{
    const std::optional<char> c = m_scanner.Next();
    if (c == 'n')
        Append(token, '\n');
    else if (c == 't')
        Append(token, '\t');
    else if (c == 'r')
        Append(token, '\r');
    else if (c == 'x')
        ReadCode(token, 2);
    else if (c == 'u')
        ReadCode(token, 4);
    else if (c == 'U')
        ReadCode(token, 6);
    else if (c) // OpenSCAD drops a backslash that begins no escape
        Append(token, *c);
}

void ScadLexer::ReadCode(Token& token, int digits)
{
    char32_t code = 0;
    for (int i = 0; i < digits; ++i) {
        const std::optional<char> c = m_scanner.Peek();
        const int digit = c ? DigitOf(*c) : -1;
        if (digit < 0)
            break;
        code = code * 16 + static_cast<char32_t>(digit);
        m_scanner.Next();
    }
    AppendCode(token, code);
}

Token ScadLexer::ReadName()
{
    Token token;
    token.kind = TokenKind::Name;
    token.begin = m_scanner.Position();
    while (const std::optional<char> c = m_scanner.Peek()) {
        if (!IsNameCharacter(*c))
            break;
        Append(token, *c);
        m_scanner.Next();
    }
    token.end = m_scanner.Position();
    if (token.text != "include" && token.text != "use")
        return token;
    while (const std::optional<char> c = m_scanner.Peek()) {
        if (c == '<')
            return ReadIncluded(token.text == "use" ? TokenKind::Use : TokenKind::Include);
        if (!IsBlank(*c))
            break;
        m_scanner.Next();
    }
    return token;
}

Token ScadLexer::ReadIncluded(TokenKind kind)
{
    Token token;
    token.kind = kind;
    m_scanner.Next();
    token.begin = m_scanner.Position();
    while (const std::optional<char> c = m_scanner.Next()) {
        if (c == '>') {
            token.end = m_scanner.Position() - 1;
            return token;
        }
        if (c != '\t' && c != '\r' && c != '\n')
            Append(token, *c);
    }
    throw FormatError("an include without an end", token.begin - 1);
}

} // namespace Halvern::Formats::OpenScad
