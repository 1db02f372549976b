// SPDX-License-Identifier: Apache-2.0

#include "DirectXDocument.h"

#include "KitNames.h"
#include "pluginkit/FileScanner.h"
#include "pluginkit/FormatError.h"

namespace Halvern::Formats::Meshes {

namespace {

constexpr std::size_t MaxString = std::size_t(64) << 10;
constexpr std::size_t MaxWord = 256;

bool IsWordPart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '.';
}

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

class Reader
{
public:
    Reader(const InputFile& file, std::uint64_t begin, DirectXVisitor& visitor)
        : m_scanner(file, begin), m_visitor(visitor)
    {}

    void Run()
    {
        while (const std::optional<char> c = m_scanner.Peek())
            Step(*c);
    }

private:
    void Step(char c)
    {
        const std::uint64_t position = m_scanner.Position();
        if (IsLetter(c))
            return Word();
        m_scanner.Next();
        if (c == '{')
            m_visitor.Open(position);
        else if (c == '}')
            m_visitor.Close(position);
        else if (c == '"')
            String(position);
        else if (c == '#' || (c == '/' && m_scanner.Peek() == '/'))
            m_scanner.SkipTo("\r\n");
        else if (c == ';' || c == ',')
            m_visitor.Separator();
    }

    void Word()
    {
        std::string word;
        for (std::optional<char> c = m_scanner.Peek(); c && IsWordPart(*c); c = m_scanner.Peek()) {
            if (word.size() < MaxWord)
                word += *c;
            m_scanner.Next();
        }
        m_visitor.Word(word);
    }

    void String(std::uint64_t position)
    {
        DirectXString string;
        string.begin = m_scanner.Position();
        while (const std::optional<char> c = m_scanner.Next()) {
            if (c == '"') {
                string.end = m_scanner.Position() - 1;
                return m_visitor.String(std::move(string));
            }
            string.raw += *c;
            if (string.raw.size() > MaxString)
                throw FormatError("a string of more than 64 KiB", position);
        }
        throw FormatError("a string without an end", position);
    }

    FileScanner m_scanner;
    DirectXVisitor& m_visitor;
};

} // namespace

void ReadDirectXText(const InputFile& file, std::uint64_t begin, DirectXVisitor& visitor)
{
    Reader(file, begin, visitor).Run();
}

} // namespace Halvern::Formats::Meshes
