// SPDX-License-Identifier: Apache-2.0

#include "SExpressions.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace Halvern::Formats::Kicad {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsOctal(char c)
{
    return c >= '0' && c <= '7';
}

int HexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

class Reader
{
public:
    Reader(const InputFile& file, ListHandler& handler) : m_scanner(file), m_handler(handler) {}

    void Read(const std::vector<std::string>& names)
    {
        if (m_scanner.Peek() == '\xEF')
            SkipMark();
        SkipBlanks();
        if (m_scanner.Peek() != '(')
            Fail("the file does not begin with a list");
        Open();
        if (std::find(names.begin(), names.end(), m_name) == names.end())
            throw FormatError(
                "a file of the kind \"" + m_name.substr(0, 40) + "\" is not understood", 0);
        while (m_depth > 0)
            ReadNext();
    }

private:
    [[noreturn]] void Fail(const std::string& reason)
    {
        throw FormatError(reason, m_scanner.Position());
    }

    char Take()
    {
        const std::optional<char> c = m_scanner.Next();
        if (!c)
            Fail("the file ends within " + std::to_string(m_depth) + " open lists");
        if (*c == '\0')
            throw FormatError("a NUL byte", m_scanner.Position() - 1);
        return *c;
    }

    void SkipMark()
    {
        for (const char expected : {'\xEF', '\xBB', '\xBF'})
            if (m_scanner.Next() != expected)
                throw FormatError("the file does not begin with a list", 0);
    }

    /// A line whose first character is "#" is a comment.
    void SkipBlanks()
    {
        while (const std::optional<char> c = m_scanner.Peek()) {
            if (*c == '#' && m_atLineBegin) {
                m_scanner.SkipTo("\n");
            } else if (IsBlank(*c)) {
                m_atLineBegin = *c == '\n' || m_atLineBegin;
                m_scanner.Next();
            } else {
                break;
            }
        }
        m_atLineBegin = false;
    }

    void ReadNext()
    {
        SkipBlanks();
        const std::optional<char> c = m_scanner.Peek();
        if (c == '(') {
            Open();
        } else if (c == ')') {
            m_scanner.Next();
            --m_depth;
            m_handler.EndList();
        } else {
            ReadAtom();
            m_handler.AddAtom(m_atom);
        }
    }

    void Open()
    {
        if (m_depth == MaxNesting)
            Fail("lists nested deeper than " + std::to_string(MaxNesting) + " levels");
        const std::uint64_t position = m_scanner.Position();
        m_scanner.Next();
        ++m_depth;
        SkipBlanks();
        const std::optional<char> c = m_scanner.Peek();
        m_atom.text.clear();
        if (c != '(' && c != ')')
            ReadAtom();
        m_name = m_atom.text;
        m_handler.BeginList(m_name, position);
    }

    void ReadAtom()
    {
        m_atom.text.clear();
        m_atom.offsets.clear();
        m_atom.isCut = false;
        m_atom.begin = m_scanner.Position();
        m_atom.isQuoted = m_scanner.Peek() == '"';
        if (m_atom.isQuoted)
            ReadQuoted();
        else
            ReadWord();
        m_atom.end = m_scanner.Position();
    }

    void ReadWord()
    {
        do
            Keep(Take());
        while (!m_scanner.AtEnd() && !IsBlank(*m_scanner.Peek()) && *m_scanner.Peek() != '(' &&
               *m_scanner.Peek() != ')');
    }

    void ReadQuoted()
    {
        Take();
        bool hasEscapes = false;
        for (char c = Take(); c != '"'; c = Take()) {
            const std::uint64_t place = m_scanner.Position() - 1;
            if (c == '\\' && !std::exchange(hasEscapes, true))
                for (std::size_t i = 0; i < m_atom.text.size(); ++i)
                    m_atom.offsets.push_back(static_cast<std::uint32_t>(i + 1));
            if (c == '\\')
                ReadEscape();
            else
                Keep(c);
            if (hasEscapes && m_atom.offsets.size() < m_atom.text.size())
                m_atom.offsets.push_back(static_cast<std::uint32_t>(place - m_atom.begin));
        }
    }

    void ReadEscape()
    {
        const char c = Take();
        constexpr std::string_view letters = "abfnrtv";
        constexpr std::string_view values = "\a\b\f\n\r\t\v";
        const std::size_t index = letters.find(c);
        if (index != std::string_view::npos)
            Keep(values[index]);
        else if (c == 'x')
            ReadHex();
        else if (IsOctal(c))
            ReadOctal(c - '0');
        else
            Keep(c);
    }

    void ReadHex()
    {
        int value = 0;
        for (int digits = 0; digits < 2 && m_scanner.Peek(); ++digits) {
            const int digit = HexValue(*m_scanner.Peek());
            if (digit < 0)
                break;
            value = value * 16 + digit;
            m_scanner.Next();
        }
        Keep(static_cast<char>(value));
    }

    void ReadOctal(int value)
    {
        for (int digits = 1; digits < 3 && m_scanner.Peek() && IsOctal(*m_scanner.Peek()); ++digits)
            value = value * 8 + (*m_scanner.Next() - '0');
        Keep(static_cast<char>(value));
    }

    void Keep(char c)
    {
        if (m_atom.text.size() < MaxAtomSize)
            m_atom.text += c;
        else
            m_atom.isCut = true;
    }

    FileScanner m_scanner;
    ListHandler& m_handler;
    Atom m_atom;
    std::string m_name;
    std::size_t m_depth = 0;
    bool m_atLineBegin = true;
};

} // namespace

std::uint64_t Atom::PlaceOf(std::size_t index) const
{
    if (index < offsets.size())
        return begin + offsets[index];
    return index < text.size() ? begin + index + (isQuoted ? 1 : 0) : end - (isQuoted ? 1 : 0);
}

void ReadLists(const InputFile& file, const std::vector<std::string>& names, ListHandler& handler)
{
    Reader(file, handler).Read(names);
}

std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\r') {
            quoted += "\\r";
        } else {
            if (c == '"' || c == '\\')
                quoted += '\\';
            quoted += c;
        }
    }
    return quoted + '"';
}

} // namespace Halvern::Formats::Kicad
