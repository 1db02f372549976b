// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name, on files that
// another program exported.

#include "FormatFixture.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>

namespace Halvern::Test {

namespace {

class WavefrontPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    WavefrontPlugin()
        : LoadedResolver(QStringLiteral(WAVEFRONT_PLUGIN_FILE)), ResolverFixture(Get())
    {
        Import(QStringLiteral(WAVEFRONT_CORPUS "/möbel"), QStringLiteral("möbel"));
    }
};

} // namespace

TEST(WavefrontPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    QLibrary library(QStringLiteral(WAVEFRONT_PLUGIN_FILE));
    ASSERT_TRUE(library.load()) << library.errorString().toStdString();
    EXPECT_TRUE(library.resolve("CreateFileLinkResolverFactory"));
    EXPECT_FALSE(library.resolve("CreateSyncPluginFactory"));
}

TEST(WavefrontPluginLibrary, ItsRegistrationFileNamesItAndItsTypes)
{
    const QFileInfo library(QStringLiteral(WAVEFRONT_PLUGIN_FILE));
    QFile file(library.path() + QStringLiteral("/../SyncPluginRegFiles/wavefront.syncplugin"));
    ASSERT_TRUE(file.open(QFile::ReadOnly)) << file.fileName().toStdString();
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("Module=\"%1\"").arg(library.fileName())));
    EXPECT_TRUE(text.contains(QStringLiteral("FileTypes=\"obj,mtl\"")));
}

TEST_F(WavefrontPlugin, FindsEveryFileOfTheExportedObjects)
{
    const QString picture = QStringLiteral("Bilder für alle/");
    EXPECT_EQ(Read(QStringLiteral("möbel/Stuhl grün.obj")),
              (Links{LinkTo(u"mtllib 1", u"Stuhl grün.mtl")}));
    EXPECT_EQ(
        Read(QStringLiteral("möbel/Stuhl grün.mtl")),
        (Links{
            {QStringLiteral("Eiche_hell/map_kd"), picture + QStringLiteral("Eiche hell.png")},
            {QStringLiteral("Eiche_hell_rau/map_ns"), picture + QStringLiteral("Eiche hell.png")},
            {QStringLiteral("Höhe_über_Grund/map_kd"), picture + QStringLiteral("Höhe #1.png")},
            {QStringLiteral("Höhe_über_Grund_rau/map_ns"),
             picture + QStringLiteral("Höhe #1.png")}}));
    const QStringList table = PathsOf(Read(QStringLiteral("möbel/Tisch 木.mtl")));
    EXPECT_TRUE(table.contains(picture + QStringLiteral("Relief.png")));
    EXPECT_TRUE(table.contains(picture + QStringLiteral("木目 50%.png")));
    for (const QString& path : table)
        EXPECT_TRUE(tree.Exists(QStringLiteral("möbel/") + path)) << path.toStdString();
}

TEST_F(WavefrontPlugin, RewritesTheExportedObjectsAndBackWithoutATrace)
{
    const FileTree::Snapshot before = tree.Contents();
    for (const QString& file :
         {QStringLiteral("möbel/Stuhl grün.obj"), QStringLiteral("möbel/Tisch 木.mtl")}) {
        const Links links = Read(file);
        ASSERT_FALSE(links.isEmpty());
        QByteArray expected = tree.Read(file);
        expected.replace("mtllib ", "mtllib ../Größe/");
        expected.replace("Bilder", "../Größe/Bilder");
        Links moved = links;
        for (Link& link : moved)
            link.second.prepend(QStringLiteral("../Größe/"));
        EXPECT_TRUE(Repath(file, moved));
        EXPECT_EQ(tree.Read(file), expected);
        // The object finds the library of its own name beside itself, told or not.
        EXPECT_EQ(Read(file).mid(0, moved.size()), moved);
        EXPECT_TRUE(Repath(file, links));
    }
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
