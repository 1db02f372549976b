// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name, on files that
// another program exported.

#include "FormatFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class WavefrontPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    WavefrontPlugin()
        : LoadedResolver(QStringLiteral(WAVEFRONT_PLUGIN_FILE)), ResolverFixture(Get())
    {
        Import(QStringLiteral(WAVEFRONT_CORPUS "/möbel"), u"möbel"_s);
    }
};

} // namespace

TEST(WavefrontPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    ExpectResolverLibrary(QStringLiteral(WAVEFRONT_PLUGIN_FILE));
}

TEST(WavefrontPluginLibrary, ItsRegistrationFileNamesItAndItsTypes)
{
    ExpectRegistration(QStringLiteral(WAVEFRONT_PLUGIN_FILE), u"wavefront"_s, u"obj,mtl"_s);
}

TEST_F(WavefrontPlugin, FindsEveryFileOfTheExportedObjects)
{
    const QString picture = u"Bilder für alle/"_s;
    EXPECT_EQ(Read(u"möbel/Stuhl grün.obj"_s), (Links{LinkTo(u"mtllib 1", u"Stuhl grün.mtl")}));
    EXPECT_EQ(Read(u"möbel/Stuhl grün.mtl"_s),
              (Links{{u"Eiche_hell/map_kd"_s, picture + u"Eiche hell.png"_s},
                     {u"Eiche_hell_rau/map_ns"_s, picture + u"Eiche hell.png"_s},
                     {u"Höhe_über_Grund/map_kd"_s, picture + u"Höhe #1.png"_s},
                     {u"Höhe_über_Grund_rau/map_ns"_s, picture + u"Höhe #1.png"_s}}));
    const QStringList table = PathsOf(Read(u"möbel/Tisch 木.mtl"_s));
    EXPECT_TRUE(table.contains(picture + u"Relief.png"_s));
    EXPECT_TRUE(table.contains(picture + u"木目 50%.png"_s));
    for (const QString& path : table)
        EXPECT_TRUE(tree.Exists(u"möbel/"_s + path)) << path.toStdString();
}

TEST_F(WavefrontPlugin, RewritesTheExportedObjectsAndBackWithoutATrace)
{
    const FileTree::Snapshot before = tree.Contents();
    for (const QString& file : {u"möbel/Stuhl grün.obj"_s, u"möbel/Tisch 木.mtl"_s}) {
        const Links links = Read(file);
        ASSERT_FALSE(links.isEmpty());
        QByteArray expected = tree.Read(file);
        expected.replace("mtllib ", "mtllib ../Größe/");
        expected.replace("Bilder", "../Größe/Bilder");
        Links moved = links;
        for (Link& link : moved)
            link.second.prepend(u"../Größe/"_s);
        EXPECT_TRUE(Repath(file, moved));
        EXPECT_EQ(tree.Read(file), expected);
        // The object finds the library of its own name beside itself, told or not.
        EXPECT_EQ(Read(file).mid(0, moved.size()), moved);
        EXPECT_TRUE(Repath(file, links));
    }
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
