// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name, on files that
// SolveSpace wrote.

#include "FormatFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class SolveSpacePlugin : private LoadedResolver, public ResolverFixture
{
protected:
    SolveSpacePlugin()
        : LoadedResolver(QStringLiteral(SOLVESPACE_PLUGIN_FILE)), ResolverFixture(Get())
    {
        Import(QStringLiteral(SOLVESPACE_CORPUS "/maschine"), u"p"_s);
    }
};

} // namespace

TEST(SolveSpacePluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    ExpectResolverLibrary(QStringLiteral(SOLVESPACE_PLUGIN_FILE));
}

TEST(SolveSpacePluginLibrary, ItsRegistrationFileNamesItAndItsTypes)
{
    ExpectRegistration(QStringLiteral(SOLVESPACE_PLUGIN_FILE), u"solvespace"_s, u"slvs"_s);
}

TEST_F(SolveSpacePlugin, FindsEveryModelAndPicture)
{
    EXPECT_EQ(Read(u"p/Baugruppen/Rad.slvs"_s),
              (Links{LinkTo(u"group 00000003", u"../Teile/Bolzen 木.slvs"),
                     LinkTo(u"group 00000004", u"../Teile/Träger = groß.slvs"),
                     LinkTo(u"group 00000005", u"../Teile/Bolzen 木.slvs"),
                     LinkTo(u"request 00000004", u"../Bilder & Pläne/Schild #1.png"),
                     LinkTo(u"entity 00040000", u"../Bilder & Pläne/Schild #1.png")}));
    // The picture of a linked model is named again among the entities.
    EXPECT_EQ(PathsOf(Read(u"p/Maschine Größe.slvs"_s)),
              (QStringList{u"Baugruppen/Rad.slvs"_s, u"Teile/Bolzen 木.slvs"_s,
                           u"Bilder & Pläne/Plan 木.png"_s, u"Bilder & Pläne/Plan 木.png"_s,
                           u"Bilder & Pläne/Plan 木.png"_s, u"Bilder & Pläne/Plan 木.png"_s,
                           u"Bilder & Pläne/Schild #1.png"_s}));
    EXPECT_EQ(Read(u"p/Teile/Bolzen 木.slvs"_s), Links{});
}

TEST_F(SolveSpacePlugin, RewritesAModelAndBackWithoutATrace)
{
    const FileTree::Snapshot before = tree.Contents();
    const QString file = u"p/Maschine Größe.slvs"_s;
    const Links links = Read(file);
    QByteArray expected = tree.Read(file);
    expected.replace("impFileRel=", "impFileRel=../Mä/").replace(".file=", ".file=../Mä/");
    Links moved = links;
    for (Link& link : moved)
        link.second.prepend(u"../Mä/"_s);
    EXPECT_TRUE(Repath(file, moved));
    EXPECT_EQ(tree.Read(file), expected);
    EXPECT_EQ(expected.count("../Mä/"), 7);
    EXPECT_EQ(Read(file), moved);
    EXPECT_TRUE(Repath(file, links));
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
