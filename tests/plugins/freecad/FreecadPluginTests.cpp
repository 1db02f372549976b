// SPDX-License-Identifier: Apache-2.0

// The built plug-in, on documents that FreeCAD wrote (corpus/make-corpus.py).

#include "FreecadFixture.h"

#include <QtCore/QDirIterator>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class FreecadPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    FreecadPlugin() : LoadedResolver(QStringLiteral(FREECAD_PLUGIN_FILE)), ResolverFixture(Get())
    {
        const QDir source(QStringLiteral(FREECAD_CORPUS));
        QDirIterator it(source.path(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            EXPECT_TRUE(file.open(QFile::ReadOnly));
            tree.File(source.relativeFilePath(file.fileName()), file.readAll());
        }
    }

    const QString m_top = u"Baugruppen/Haupt Größe.FCStd"_s;
    const QString m_sub = u"Baugruppen/Unter Gruppe.FCStd"_s;
};

const char16_t* const Bolt = u"../Teile/Bolzen 木.FCStd";
const char16_t* const Beam = u"../Teile & Bleche/Träger's T.FCStd";
const char16_t* const Sizes = u"../Tabellen/Maße.FCStd";

} // namespace

TEST(FreecadPluginLibrary, ItsRegistrationFileNamesIt)
{
    ExpectRegistration(QStringLiteral(FREECAD_PLUGIN_FILE), u"freecad"_s, u"fcstd"_s);
}

TEST_F(FreecadPlugin, FindsEveryLinkThatFreecadWrote)
{
    EXPECT_EQ(Read(m_top), (Links{L(u"Cube.ExpressionEngine", Sizes), L(u"Cube.MyXLink", Beam),
                                  L(u"Cube.MyXLinkList", Bolt), L(u"Cube.MyXLinkList#2", Beam),
                                  L(u"Cube.MyXLinkSub", Bolt), L(u"Cube.MyXLinkSubList", Bolt),
                                  L(u"Cube.MyXLinkSubList#2", Beam), L(u"Cells.cells", Bolt),
                                  L(u"Cells.cells#2", Sizes), L(u"Bolt.LinkedObject", Bolt),
                                  L(u"Bolt2.LinkedObject", Bolt), L(u"Beam.LinkedObject", Beam),
                                  L(u"Lost.LinkedObject", u"../Teile/Verloren.FCStd"),
                                  L(u"Binder.Support", Bolt), L(u"Binder.Support#2", Beam),
                                  L(u"Sub.LinkedObject", u"Unter Gruppe.FCStd")}));
    EXPECT_EQ(Read(m_sub), (Links{L(u"Bolt.LinkedObject", Bolt),
                                  L(u"Back.LinkedObject", u"Haupt Größe.FCStd")}));
    EXPECT_EQ(Read(u"Teile/Bolzen 木.FCStd"_s), Links());
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(FreecadPlugin, RewritesEveryLinkAndBack)
{
    const Links links = Read(m_top);
    Links moved = links;
    for (qsizetype i = 0; i < moved.size(); ++i)
        moved[i].second = u"../ganz wo anders/%1 & ä.FCStd"_s.arg(i);
    EXPECT_TRUE(Repath(m_top, moved));
    EXPECT_EQ(Read(m_top), moved);
    EXPECT_TRUE(Repath(m_top, links));
    EXPECT_EQ(Read(m_top), links);
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(FreecadPlugin, WhatFreecadPackedStaysAsItIsBehindTheDocument)
{
    const QByteArray before = tree.Read(m_top);
    EXPECT_TRUE(Repath(m_top, {L(u"Sub.LinkedObject", u"../Unter.FCStd")}));
    const QByteArray after = tree.Read(m_top);
    const auto shapes = [](const QByteArray& archive) {
        const qsizetype begin = archive.indexOf("PK\3\4", 4);
        return archive.mid(begin, archive.indexOf("PK\1\2") - begin);
    };
    EXPECT_GT(shapes(before).size(), 1000);
    EXPECT_EQ(shapes(after), shapes(before));
    EXPECT_EQ(after.right(18), before.right(18)); // "FreeCAD Document" and its length
    EXPECT_EQ(after.left(14), before.left(14));   // up to the time
}

} // namespace Halvern::Test
