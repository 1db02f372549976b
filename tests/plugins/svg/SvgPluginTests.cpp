// SPDX-License-Identifier: Apache-2.0

// The built plug-in, on drawings that Inkscape wrote (corpus/make-corpus.py).

#include "SvgFixture.h"

#include <QtCore/QDirIterator>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class SvgPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    SvgPlugin() : LoadedResolver(QStringLiteral(SVG_PLUGIN_FILE)), ResolverFixture(Get())
    {
        const QDir source(QStringLiteral(SVG_CORPUS));
        QDirIterator it(source.path(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            EXPECT_TRUE(file.open(QFile::ReadOnly));
            tree.File(source.relativeFilePath(file.fileName()), file.readAll());
        }
    }
};

const char16_t* const Red = u"../Bilder & Texturen/Rot 赤.png";

} // namespace

TEST(SvgPluginLibrary, ItsRegistrationFileNamesIt)
{
    ExpectRegistration(QStringLiteral(SVG_PLUGIN_FILE), u"svg"_s, u"svg,svgz,css"_s);
}

TEST_F(SvgPlugin, FindsEveryLinkThatInkscapeWrote)
{
    EXPECT_EQ(Read(u"Zeichnungen/Haupt Größe.svg"_s),
              (Links{L(u"#cell0/xlink:href", Red),
                     L(u"#cell1/xlink:href", u"../Bilder & Texturen/Grün #1 50%.png"),
                     L(u"#cell2/xlink:href", u"Blau.png"),
                     L(u"#cell3/xlink:href", u"../Fern/Orange (1).png"),
                     L(u"#cell4/xlink:href", u"../Fern/Grau's.png"),
                     L(u"#cell5/xlink:href", u"Teile ü.svg"), L(u"#cell6/fill/url", u"Teile ü.svg"),
                     L(u"#cell7/style/url", u"Teile ü.svg"),
                     L(u"#cell8/xlink:href", u"Gibt es nicht.png"), L(u"#cell10/xlink:href", Red),
                     L(u"#cell12/xlink:href", u"../Fern/Oliv.png")}));
    EXPECT_EQ(Read(u"Zeichnungen/Neben.svgz"_s),
              (Links{L(u"#cell0/xlink:href", Red), L(u"#cell1/xlink:href", u"Teile ü.svg")}));
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(SvgPlugin, FindsTheStyleSheetsOfADrawingAndTheirs)
{
    const Links plan = Read(u"Plan/Plan 1.svg"_s);
    ASSERT_EQ(plan.size(), 10);
    EXPECT_EQ(plan.at(0), L(u"xml-stylesheet/href", u"Stil/farben.css"));
    EXPECT_EQ(Read(u"Plan/Plan 2.svgz"_s), plan);
    EXPECT_EQ(Read(u"Plan/Stil/farben.css"_s), (Links{L(u"css/@import", u"mehr farben.css")}));
    EXPECT_EQ(Read(u"Plan/Stil/mehr farben.css"_s), Links());
}

TEST_F(SvgPlugin, RewritesTheDrawingsAndBackWithoutATrace)
{
    const FileTree::Snapshot before = tree.Contents();
    for (const QString& file : {u"Zeichnungen/Haupt Größe.svg"_s, u"Zeichnungen/Teile ü.svg"_s}) {
        const Links links = Read(file);
        Links moved = links;
        for (Link& link : moved)
            link.second.prepend(u"../ganz wo anders (2)/"_s);
        EXPECT_TRUE(Repath(file, moved));
        EXPECT_EQ(Read(file), moved);
        EXPECT_TRUE(Repath(file, links));
    }
    FileTree::Snapshot after = tree.Contents();
    // What is spelled in several ways is written in one.
    QByteArray& drawing = after[u"Zeichnungen/Haupt Größe.svg"_s];
    drawing.replace("url(Teile%20%C3%BC.svg", "url(Teile%20ü.svg")
        .replace("url('Teile%20%C3%BC.svg", "url('Teile ü.svg")
        .replace("Grau&apos;s", "Grau's");
    EXPECT_EQ(drawing, before.value(u"Zeichnungen/Haupt Größe.svg"_s));
    EXPECT_TRUE(after == before);
}

} // namespace Halvern::Test
