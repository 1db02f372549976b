// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name, on files that
// another program wrote.

#include "FormatFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class DxfPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    DxfPlugin() : LoadedResolver(QStringLiteral(DXF_PLUGIN_FILE)), ResolverFixture(Get())
    {
        Import(QStringLiteral(DXF_CORPUS "/bau"), u"p"_s);
    }
};

} // namespace

TEST(DxfPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    ExpectResolverLibrary(QStringLiteral(DXF_PLUGIN_FILE));
}

TEST(DxfPluginLibrary, ItsRegistrationFileNamesItAndItsTypes)
{
    ExpectRegistration(QStringLiteral(DXF_PLUGIN_FILE), u"dxf"_s, u"dxf"_s);
}

TEST_F(DxfPlugin, FindsEveryReferenceInEveryVersionAndForm)
{
    const QString pictures = u"../Bilder & mehr/"_s;
    EXPECT_EQ(PathsOf(Read(u"p/Pläne/Haus 木.dxf"_s)),
              (QStringList{u"../Teile/Tür.dxf"_s, u"Dach.dxf"_s, pictures + u"Foto #1.png"_s,
                           pictures + u"Grün 50%.png"_s, pictures + u"木目.png"_s,
                           pictures + u"Foto #1.png"_s, pictures + u"Grundriß.pdf"_s}));
    EXPECT_EQ(PathsOf(Read(u"p/Pläne/Alt.dxf"_s)),
              (QStringList{u"../Teile/Tür.dxf"_s, u"Dach.dxf"_s, pictures + u"Grün 50%.png"_s,
                           pictures + u"木目.png"_s}));
    EXPECT_EQ(PathsOf(Read(u"p/Pläne/Binär.dxf"_s)),
              (QStringList{u"../Teile/Fenster.dxf"_s, u"../Teile/Tür.dxf"_s, u"Dach.dxf"_s,
                           pictures + u"Foto #1.png"_s, pictures + u"Grün 50%.png"_s,
                           pictures + u"木目.png"_s}));
    EXPECT_EQ(Read(u"p/Pläne/R12 binär.dxf"_s),
              (Links{LinkTo(u"block Fenster", u"../Teile/Fenster.dxf"),
                     LinkTo(u"block DACH", u"Dach.dxf")}));
    EXPECT_EQ(Read(u"p/Teile/Tür.dxf"_s), Links{});
}

TEST_F(DxfPlugin, RewritesDrawingsAndBackWithoutATrace)
{
    const FileTree::Snapshot before = tree.Contents();
    for (const char16_t* name : {u"Haus 木", u"Alt", u"Binär"}) {
        const QString file = u"p/Pläne/%1.dxf"_s.arg(name);
        const QByteArray original = tree.Read(file);
        const Links links = Read(file);
        Links moved = links;
        for (Link& link : moved)
            link.second = u"../木/%1.neu"_s.arg(link.second);
        EXPECT_TRUE(Repath(file, moved));
        EXPECT_EQ(Read(file), moved);
        const QByteArray mark = name == u"Alt"_s ? "../\\U+6728/" : "../木/";
        EXPECT_EQ(tree.Read(file).count(mark), links.size());
        // All but the paths stays; those of Windows become those of everywhere.
        QByteArray rest = tree.Read(file);
        rest.replace(mark, "")
            .replace(".neu", "")
            .replace("\\U+76ee", "\\U+76EE")
            .replace("../Teile/F", "..\\Teile\\F");
        EXPECT_TRUE(rest == QByteArray(original).replace("\\U+76ee", "\\U+76EE"));
        EXPECT_TRUE(Repath(file, links));
    }
    const QString whole = u"p/Pläne/Haus 木.dxf"_s;
    EXPECT_EQ(tree.Read(whole), before.value(whole));
}

} // namespace Halvern::Test
