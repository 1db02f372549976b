// SPDX-License-Identifier: Apache-2.0

#include "Statements.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Wavefront {

namespace {

constexpr std::size_t MaxKeyword = 16;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool IsLineBreak(std::optional<char> c)
{
    return c == '\n' || c == '\r';
}

char LowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

} // namespace

std::vector<Word> Statement::Words() const
{
    std::vector<Word> words;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = text.find_first_not_of(" \t", at);
        if (start == std::string::npos)
            break;
        at = std::min(text.find_first_of(" \t", start), text.size());
        words.push_back({start, at});
    }
    return words;
}

StatementReader::StatementReader(const InputFile& file, IsWanted wanted, Continuation continuation)
    : m_scanner(file), m_wanted(wanted), m_continuation(continuation)
{}

/// Takes the line break after a backslash, which was taken; says whether there was one.
bool StatementReader::JoinsLines(std::string* text)
{
    if (m_continuation == Continuation::None || !IsLineBreak(m_scanner.Peek()))
        return false;
    std::size_t blanks = 2;
    if (m_scanner.Next() == '\r' && m_scanner.Peek() == '\n') {
        m_scanner.Next();
        blanks = 3;
    }
    if (text)
        text->append(blanks, ' ');
    return true;
}

std::string StatementReader::ReadKeyword()
{
    std::string keyword;
    while (const std::optional<char> c = m_scanner.Peek()) {
        if (IsBlank(*c) || IsLineBreak(c) || keyword.size() > MaxKeyword)
            break;
        keyword.push_back(LowerCase(*c));
        m_scanner.Next();
    }
    return keyword;
}

std::string StatementReader::ReadText()
{
    const std::uint64_t begin = m_scanner.Position();
    std::string text;
    while (const std::optional<char> c = m_scanner.Peek()) {
        if (IsLineBreak(c))
            break;
        m_scanner.Next();
        if (c != '\\' || !JoinsLines(&text))
            text.push_back(*c);
        if (text.size() > MaxStatement)
            throw FormatError("a statement that names files has more than " +
                                  std::to_string(MaxStatement) + " bytes",
                              begin);
    }
    return text;
}

void StatementReader::SkipLine()
{
    // The line break first: in most files it is never far, the others may be missing.
    while (m_scanner.SkipTo(m_continuation == Continuation::None ? "\n\r" : "\n\r\\")) {
        if (m_scanner.Next() != '\\')
            return;
        JoinsLines(nullptr);
    }
}

std::optional<Statement> StatementReader::Next()
{
    while (const std::optional<char> c = m_scanner.Peek()) {
        if (IsBlank(*c) || IsLineBreak(c)) {
            m_scanner.Next();
            continue;
        }
        Statement statement;
        statement.keyword = ReadKeyword();
        if (statement.keyword.size() <= MaxKeyword && m_wanted(statement.keyword)) {
            statement.begin = m_scanner.Position();
            statement.form = m_scanner.Form();
            statement.text = ReadText();
            return statement;
        }
        // A comment often ends with the folder that a program wrote the file from.
        if (statement.keyword.starts_with('#'))
            m_scanner.SkipTo("\n\r");
        else
            SkipLine();
    }
    return std::nullopt;
}

} // namespace Halvern::Formats::Wavefront
