// SPDX-License-Identifier: Apache-2.0

#include "DxfTags.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Dxf {

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
/// No group code has more digits.
constexpr int MaxCode = 99'999;

std::uint64_t BeginOf(const InputFile& file)
{
    const std::string start =
        file.Read(0, std::min<std::uint64_t>(file.Size(), ByteOrderMark.size()));
    return start == ByteOrderMark ? ByteOrderMark.size() : 0;
}

bool IsLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

} // namespace

AsciiTags::AsciiTags(const InputFile& file) : m_scanner(file, BeginOf(file)) {}

void AsciiTags::SkipBlanks()
{
    while (m_scanner.Peek() == ' ' || m_scanner.Peek() == '\t')
        m_scanner.Next();
}

/// At the end of a line, or of the file.
void AsciiTags::EndLine()
{
    if (m_scanner.Next() == '\r' && m_scanner.Peek() == '\n')
        m_scanner.Next();
}

int AsciiTags::ReadCode()
{
    const std::uint64_t begin = m_scanner.Position();
    SkipBlanks();
    const bool isNegative = m_scanner.Peek() == '-';
    if (isNegative)
        m_scanner.Next();
    int code = 0;
    int digits = 0;
    for (std::optional<char> c = m_scanner.Peek(); c && *c >= '0' && *c <= '9' && code <= MaxCode;
         c = m_scanner.Peek(), ++digits) {
        code = code * 10 + (*c - '0');
        m_scanner.Next();
    }
    SkipBlanks();
    const std::optional<char> end = m_scanner.Peek();
    if (digits == 0 || code > MaxCode || (end && !IsLineEnd(*end)))
        throw FormatError("a line that is no group code", begin);
    if (!end)
        throw FormatError("a group code without a value", begin);
    EndLine();
    return isNegative ? -code : code;
}

bool AsciiTags::Next(Tag& tag)
{
    if (m_scanner.AtEnd())
        return false;
    tag.code = ReadCode();
    tag.text.clear();
    tag.isCut = false;
    tag.begin = m_scanner.Position();
    for (std::optional<char> c = m_scanner.Peek(); c && !IsLineEnd(*c); c = m_scanner.Peek()) {
        if (tag.text.size() == MaxTagText) {
            tag.isCut = true;
            m_scanner.SkipTo("\r\n");
        } else {
            tag.text.push_back(*m_scanner.Next());
        }
    }
    tag.end = m_scanner.Position();
    EndLine();
    return true;
}

} // namespace Halvern::Formats::Dxf
