// SPDX-License-Identifier: Apache-2.0

// The built plug-in, on drawings that Inkscape wrote (corpus/make-corpus.py).

#include "SvgFixture.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>

namespace Halvern::Test {

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
    const QFileInfo library(QStringLiteral(SVG_PLUGIN_FILE));
    QFile file(library.absolutePath() + QStringLiteral("/../SyncPluginRegFiles/svg.syncplugin"));
    ASSERT_TRUE(file.open(QFile::ReadOnly)) << file.fileName().toStdString();
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("Module=\"%1\"").arg(library.fileName())));
    EXPECT_TRUE(text.contains(QStringLiteral("FileTypes=\"svg,svgz,css\"")));
}

TEST_F(SvgPlugin, FindsEveryLinkThatInkscapeWrote)
{
    EXPECT_EQ(Read(QStringLiteral("Zeichnungen/Haupt Größe.svg")),
              (Links{L(u"#cell0/xlink:href", Red),
                     L(u"#cell1/xlink:href", u"../Bilder & Texturen/Grün #1 50%.png"),
                     L(u"#cell2/xlink:href", u"Blau.png"),
                     L(u"#cell3/xlink:href", u"../Fern/Orange (1).png"),
                     L(u"#cell4/xlink:href", u"../Fern/Grau's.png"),
                     L(u"#cell5/xlink:href", u"Teile ü.svg"), L(u"#cell6/fill/url", u"Teile ü.svg"),
                     L(u"#cell7/style/url", u"Teile ü.svg"),
                     L(u"#cell8/xlink:href", u"Gibt es nicht.png"), L(u"#cell10/xlink:href", Red),
                     L(u"#cell12/xlink:href", u"../Fern/Oliv.png")}));
    EXPECT_EQ(Read(QStringLiteral("Zeichnungen/Neben.svgz")),
              (Links{L(u"#cell0/xlink:href", Red), L(u"#cell1/xlink:href", u"Teile ü.svg")}));
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(SvgPlugin, FindsTheStyleSheetsOfADrawingAndTheirs)
{
    const Links plan = Read(QStringLiteral("Plan/Plan 1.svg"));
    ASSERT_EQ(plan.size(), 10);
    EXPECT_EQ(plan.at(0), L(u"xml-stylesheet/href", u"Stil/farben.css"));
    EXPECT_EQ(Read(QStringLiteral("Plan/Plan 2.svgz")), plan);
    EXPECT_EQ(Read(QStringLiteral("Plan/Stil/farben.css")),
              (Links{L(u"css/@import", u"mehr farben.css")}));
    EXPECT_EQ(Read(QStringLiteral("Plan/Stil/mehr farben.css")), Links());
}

TEST_F(SvgPlugin, RewritesTheDrawingsAndBackWithoutATrace)
{
    const FileTree::Snapshot before = tree.Contents();
    for (const QString& file : {QStringLiteral("Zeichnungen/Haupt Größe.svg"),
                                QStringLiteral("Zeichnungen/Teile ü.svg")}) {
        const Links links = Read(file);
        Links moved = links;
        for (Link& link : moved)
            link.second.prepend(QStringLiteral("../ganz wo anders (2)/"));
        EXPECT_TRUE(Repath(file, moved));
        EXPECT_EQ(Read(file), moved);
        EXPECT_TRUE(Repath(file, links));
    }
    FileTree::Snapshot after = tree.Contents();
    // What is spelled in several ways is written in one.
    QByteArray& drawing = after[QStringLiteral("Zeichnungen/Haupt Größe.svg")];
    drawing.replace("url(Teile%20%C3%BC.svg", "url(Teile%20ü.svg")
        .replace("url('Teile%20%C3%BC.svg", "url('Teile ü.svg")
        .replace("Grau&apos;s", "Grau's");
    EXPECT_EQ(drawing, before.value(QStringLiteral("Zeichnungen/Haupt Größe.svg")));
    EXPECT_TRUE(after == before);
}

} // namespace Halvern::Test
