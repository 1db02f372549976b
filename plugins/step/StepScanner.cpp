// SPDX-License-Identifier: Apache-2.0

#include "StepScanner.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Step {

namespace {

constexpr std::string_view Beginning = "ISO-10303-21";
constexpr std::string_view Ending = "END-ISO-10303-21";
constexpr std::size_t MaxWord = 64;
constexpr std::uint64_t MaxInstance = 1'000'000'000'000'000'000;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsWordCharacter(char c)
{
    return IsDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '-' ||
           c == '.' || c == '$' || c == '*' || c == '!' || c == '+';
}

} // namespace

const StepString* Statement::FirstString() const
{
    std::size_t depth = 0;
    for (const Parameter& parameter : parameters) {
        if (parameter.kind == Parameter::String)
            return &parameter.string;
        if (parameter.kind == Parameter::Open)
            ++depth;
        if (parameter.kind == Parameter::Close)
            --depth;
        // After a keyword's brackets, as in IDENTIFIER(''), or a word there is the next one.
        const bool isKeyword = parameter.kind == Parameter::Word && parameter.string.raw.size() > 1;
        if (depth == 1 && parameter.kind != Parameter::Open && !isKeyword)
            return nullptr;
    }
    return nullptr;
}

StepScanner::StepScanner(const InputFile& file, IsWanted wanted) : m_scanner(file), m_wanted(wanted)
{
    RequireBeginning();
}

void StepScanner::RequireBeginning()
{
    SkipBlanks();
    const std::uint64_t begin = m_scanner.Position();
    if (ReadWord() != Beginning)
        throw FormatError("no exchange file: it does not begin with ISO-10303-21", begin);
    SkipStatement(begin);
}

void StepScanner::SkipBlanks()
{
    while (const std::optional<char> c = m_scanner.Peek()) {
        if (c == '/')
            SkipComment();
        else if (IsBlank(*c))
            m_scanner.Next();
        else
            return;
    }
}

/// At a "/"; a lone one is taken, too, since nothing else can be done with it.
void StepScanner::SkipComment()
{
    const std::uint64_t begin = m_scanner.Position();
    m_scanner.Next();
    if (m_scanner.Peek() == '*')
        m_scanner.SkipBlockComment(begin);
}

/// At an apostrophe. A doubled one ends a string and begins the next, which comes to the same.
void StepScanner::SkipString()
{
    const std::uint64_t begin = m_scanner.Position();
    m_scanner.Next();
    if (!m_scanner.SkipTo("'"))
        throw FormatError("a string without an end", begin);
    m_scanner.Next();
}

void StepScanner::SkipStatement(std::uint64_t begin)
{
    while (m_scanner.SkipTo(";'/")) {
        const std::optional<char> c = m_scanner.Peek();
        if (c == '\'') {
            SkipString();
        } else if (c == '/') {
            SkipComment();
        } else {
            m_scanner.Next();
            return;
        }
    }
    throw FormatError("a statement without an end", begin);
}

std::string StepScanner::ReadWord()
{
    std::string word;
    while (const std::optional<char> c = m_scanner.Peek()) {
        if (!IsWordCharacter(*c))
            break;
        m_scanner.Next();
        if (word.size() <= MaxWord)
            word.push_back(*c);
    }
    return word;
}

std::uint64_t StepScanner::ReadNumber()
{
    const std::uint64_t begin = m_scanner.Position();
    std::uint64_t number = 0;
    for (std::optional<char> c = m_scanner.Peek(); c && IsDigit(*c); c = m_scanner.Peek()) {
        if (number >= MaxInstance)
            throw FormatError("the name of an instance is too long", begin);
        number = number * 10 + static_cast<std::uint64_t>(*c - '0');
        m_scanner.Next();
    }
    if (m_scanner.Position() == begin)
        throw FormatError("an instance without a name", begin);
    return number;
}

/// Reads "#12 = KEYWORD" of a statement; false for a statement that has no such beginning.
bool StepScanner::ReadHead(Statement& statement)
{
    if (m_scanner.Peek() != '#')
        return false;
    m_scanner.Next();
    statement.instance = ReadNumber();
    SkipBlanks();
    if (m_scanner.Peek() != '=')
        return false;
    m_scanner.Next();
    SkipBlanks();
    statement.keyword = ReadWord();
    SkipBlanks();
    return m_scanner.Peek() == '(' && m_wanted(statement.keyword);
}

StepString StepScanner::ReadString()
{
    StepString string;
    m_scanner.Next();
    string.begin = m_scanner.Position();
    while (const std::optional<char> c = m_scanner.Next()) {
        if (c == '\'' && m_scanner.Peek() != '\'') {
            string.end = m_scanner.Position() - 1;
            return string;
        }
        string.raw.push_back(*c);
        if (c == '\'')
            string.raw.push_back(*m_scanner.Next());
        if (string.raw.size() > MaxString)
            throw FormatError("a name of a file has more than " + std::to_string(MaxString) +
                                  " bytes",
                              string.begin);
    }
    throw FormatError("a string without an end", string.begin - 1);
}

Parameter StepScanner::ReadParameter(const Statement& statement, char first)
{
    Parameter parameter{Parameter::Word, {}};
    if (first == '\'') {
        parameter.kind = Parameter::String;
        parameter.string = ReadString();
    } else if (first == '#') {
        m_scanner.Next();
        parameter.kind = Parameter::Instance;
        parameter.instance = ReadNumber();
    } else if (first == '(' || first == ')') {
        m_scanner.Next();
        parameter.kind = first == '(' ? Parameter::Open : Parameter::Close;
    } else {
        const std::uint64_t begin = m_scanner.Position();
        parameter.string.raw = ReadWord();
        if (m_scanner.Position() == begin)
            throw FormatError("#" + std::to_string(statement.instance) +
                                  " has something that is no parameter",
                              begin);
    }
    return parameter;
}

void StepScanner::ReadParameters(Statement& statement)
{
    std::size_t depth = 0;
    do {
        SkipBlanks();
        const std::optional<char> c = m_scanner.Peek();
        if (!c)
            throw FormatError("a statement without an end", statement.position);
        if (c == ',') {
            m_scanner.Next();
            continue;
        }
        if (statement.parameters.size() == MaxParameters)
            throw FormatError("#" + std::to_string(statement.instance) + " has too many parameters",
                              statement.position);
        statement.parameters.push_back(ReadParameter(statement, *c));
        const Parameter::Kind kind = statement.parameters.back().kind;
        if (kind == Parameter::Open)
            ++depth;
        else if (kind == Parameter::Close)
            --depth;
    } while (depth > 0);
    SkipStatement(statement.position);
}

bool StepScanner::Next(Statement& statement)
{
    for (;;) {
        SkipBlanks();
        statement = {};
        statement.position = m_scanner.Position();
        if (m_scanner.AtEnd())
            throw FormatError("the file ends before END-ISO-10303-21", statement.position);
        if (ReadHead(statement)) {
            ReadParameters(statement);
            return true;
        }
        if (m_scanner.Peek() == 'E' && ReadWord() == Ending) {
            SkipStatement(statement.position);
            return false;
        }
        SkipStatement(statement.position);
    }
}

} // namespace Halvern::Formats::Step
