// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name.

#include "FormatFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class OpenScadPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    OpenScadPlugin() : LoadedResolver(QStringLiteral(OPENSCAD_PLUGIN_FILE)), ResolverFixture(Get())
    {
        Import(QStringLiteral(OPENSCAD_CORPUS "/gehäuse"), u"p"_s);
    }
};

} // namespace

TEST(OpenScadPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    ExpectResolverLibrary(QStringLiteral(OPENSCAD_PLUGIN_FILE));
}

TEST(OpenScadPluginLibrary, ItsRegistrationFileNamesItAndItsType)
{
    ExpectRegistration(QStringLiteral(OPENSCAD_PLUGIN_FILE), u"openscad"_s, u"scad"_s);
}

TEST_F(OpenScadPlugin, FindsEveryFileOfTheCase)
{
    EXPECT_EQ(Read(u"p/Gehäuse 木.scad"_s),
              (Links{LinkTo(u"include 1", u"gemeinsam/Maße.scad"),
                     LinkTo(u"use 1", u"Teile/Deckel ü.scad"),
                     LinkTo(u"use 2", u"gemeinsam/Schraube M3.scad"),
                     LinkTo(u"import 1", u"Teile/Platte #1.stl"),
                     LinkTo(u"import 2", u"Teile/Umriss.dxf"),
                     LinkTo(u"surface 1", u"Teile/Höhe über Grund.dat"),
                     LinkTo(u"import 4", u"verloren.stl"),
                     LinkTo(u"variable zeichen 1", u"Teile/木 Zeichen.off"),
                     LinkTo(u"companion:Logo.stl", u"Logo.stl")}));
    EXPECT_EQ(Read(u"p/gemeinsam/Maße.scad"_s), Links{});
    EXPECT_EQ(Read(u"p/gemeinsam/Mutter.scad"_s), (Links{LinkTo(u"use 1", u"Schraube M3.scad")}));
}

TEST_F(OpenScadPlugin, RewritesTheCaseAndBackWithoutATrace)
{
    const FileTree::Snapshot before = tree.Contents();
    for (const QString& file : {u"p/Halter/Halter.scad"_s, u"p/gemeinsam/Mutter.scad"_s}) {
        const Links links = Read(file);
        ASSERT_FALSE(links.isEmpty());
        QByteArray expected = tree.Read(file);
        Links moved = links;
        for (Link& link : moved) {
            expected.replace(link.second.toUtf8(), "../Größe/" + link.second.toUtf8());
            link.second.prepend(u"../Größe/"_s);
        }
        EXPECT_TRUE(Repath(file, moved));
        EXPECT_EQ(tree.Read(file), expected);
        EXPECT_EQ(Read(file), moved);
        EXPECT_TRUE(Repath(file, links));
    }
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
