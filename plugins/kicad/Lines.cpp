// SPDX-License-Identifier: Apache-2.0

#include "Lines.h"

namespace Halvern::Formats::Kicad {

std::optional<Line> LineReader::Next()
{
    if (m_scanner.AtEnd())
        return std::nullopt;
    Line line;
    line.begin = m_scanner.Position();
    while (const std::optional<char> c = m_scanner.Next()) {
        if (c == '\r' && m_scanner.Peek() == '\n')
            m_scanner.Next();
        if (c == '\r' || c == '\n')
            break;
        if (line.text.size() < MaxLineSize)
            line.text.push_back(*c);
        else
            line.isCut = true;
    }
    return line;
}

} // namespace Halvern::Formats::Kicad
