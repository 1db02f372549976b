// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"

#include "svg/SvgResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// The resolver of drawings, and a drawing around some elements.
class SvgFixture : public ResolverFixture
{
protected:
    SvgFixture() : ResolverFixture(m_resolver) {}

    static QByteArray Svg(const QByteArray& elements)
    {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<svg xmlns=\"http://www.w3.org/2000/svg\""
               " xmlns:xlink=\"http://www.w3.org/1999/xlink\">\n" +
               elements + "\n</svg>\n";
    }
    Links LinksOf(const QByteArray& elements)
    {
        tree.File(m_file, Svg(elements));
        return Read(m_file);
    }
    /// The elements after the links of their drawing got new paths.
    QByteArray Rewritten(const QByteArray& elements, const Links& links)
    {
        tree.File(m_file, Svg(elements));
        EXPECT_TRUE(Repath(m_file, links)) << context.lines.join(u'\n').toStdString();
        const QByteArray text = tree.Read(m_file);
        const QByteArray around = Svg("|");
        const qsizetype head = around.indexOf('|');
        const qsizetype tail = around.size() - head - 1;
        EXPECT_EQ(text.left(head) + '|' + text.right(tail), around);
        return text.mid(head, text.size() - head - tail);
    }

    const QString m_file = u"plan/a.svg"_s;

private:
    Formats::Svg::SvgResolver m_resolver;
};

inline Link L(const char16_t* id, const char16_t* path)
{
    return {QString::fromUtf16(id), QString::fromUtf16(path)};
}

} // namespace Halvern::Test
