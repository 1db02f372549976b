// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name.

#include "FormatFixture.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>

namespace Halvern::Test {

namespace {

QString PluginFile()
{
    return QStringLiteral(GLTF_PLUGIN_FILE);
}

class GltfPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    GltfPlugin() : LoadedResolver(PluginFile()), ResolverFixture(Get()) {}

    /// Copies a folder of the source tree into the temporary one.
    void Import(const QString& folder, const QString& name)
    {
        const QDir source(folder);
        ASSERT_TRUE(source.exists()) << folder.toStdString();
        QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            ASSERT_TRUE(file.open(QFile::ReadOnly));
            tree.File(name + u'/' + source.relativeFilePath(file.fileName()), file.readAll());
        }
    }
};

QStringList Paths(const Links& links)
{
    QStringList paths;
    for (const Link& link : links)
        paths.append(link.second);
    return paths;
}

} // namespace

TEST(GltfPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    QLibrary library(PluginFile());
    ASSERT_TRUE(library.load()) << library.errorString().toStdString();
    EXPECT_TRUE(library.resolve("CreateFileLinkResolverFactory"));
    EXPECT_FALSE(library.resolve("CreateSyncPluginFactory"));
    EXPECT_TRUE(library.unload());
}

TEST(GltfPluginLibrary, ItsRegistrationFileNamesIt)
{
    QFile file(QFileInfo(PluginFile()).absolutePath() +
               QStringLiteral("/../SyncPluginRegFiles/gltf.syncplugin"));
    ASSERT_TRUE(file.open(QFile::ReadOnly)) << file.fileName().toStdString();
    const QString text = QString::fromUtf8(file.readAll());
    const QString module = QStringLiteral("Module=\"%1\"").arg(QFileInfo(PluginFile()).fileName());
    EXPECT_TRUE(text.contains(module)) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("FileTypes=\"gltf,glb\"")));
}

TEST_F(GltfPlugin, ReadsAndRewritesThroughTheContract)
{
    const QString file = QStringLiteral("Szene/Höhe.gltf");
    tree.File(file, R"({"images":[{"uri":"a%20b.png"}]})");
    EXPECT_EQ(Read(file), (Links{{QStringLiteral("/images/0/uri"), QStringLiteral("a b.png")}}));
    EXPECT_TRUE(Repath(file, {{QStringLiteral("/images/0/uri"), QStringLiteral("../ü.png")}}));
    EXPECT_EQ(tree.Contents(),
              (FileTree::Snapshot{{file, R"({"images":[{"uri":"../%C3%BC.png"}]})"}}));
}

TEST_F(GltfPlugin, AFailureReachesTheHostAsAFalseResultAndALogLine)
{
    EXPECT_EQ(ReadFailure(QStringLiteral("a.gltf"), "{"),
              QStringLiteral("Missing a name for object member. (byte 1)"));
    EXPECT_FALSE(Repath(QStringLiteral("a.gltf"), {{QStringLiteral("/a"), QStringLiteral("b")}}));
    EXPECT_EQ(context.lines.size(), 2);
}

TEST_F(GltfPlugin, FindsEveryLinkOfTheGardenShed)
{
    Import(QStringLiteral(CORSYNC_EXAMPLES "/garden-shed"), QStringLiteral("shed"));
    const Links links = Read(QStringLiteral("shed/scene/Shed.gltf"));
    const QString shared = QStringLiteral("../textures/Planks.png");
    EXPECT_EQ(
        Paths(links),
        (QStringList{
            shared, shared, QStringLiteral("../textures/Roof tiles.png"),
            QStringLiteral("../textures/Höhe über Grund.png"),
            QStringLiteral("../textures/Poster (spring).png"), QStringLiteral("geometry/Walls.bin"),
            QStringLiteral("geometry/Shelf.bin"), QStringLiteral("../shared/geometry/Roof.bin"),
            QStringLiteral("../shared/geometry/Ground.bin"),
            QStringLiteral("geometry/Small parts.bin"), QStringLiteral("geometry/Small parts.bin"),
            QStringLiteral("../lights/Lantern.ies")}));
    for (const QString& path : Paths(links))
        EXPECT_TRUE(tree.Exists(QStringLiteral("shed/scene/") + path)) << path.toStdString();
    EXPECT_EQ(Paths(Read(QStringLiteral("shed/scene/Work bench.gltf"))),
              (QStringList{shared, QStringLiteral("geometry/Bench.bin")}));
    EXPECT_EQ(Paths(Read(QStringLiteral("shed/Lantern.glb"))),
              QStringList{QStringLiteral("textures/Roof tiles.png")});
}

TEST_F(GltfPlugin, FindsTheLinkToTheLostPoster)
{
    Import(QStringLiteral(CORSYNC_EXAMPLES "/lost-poster"), QStringLiteral("board"));
    const QStringList paths = Paths(Read(QStringLiteral("board/Notice board.gltf")));
    const QString lost = QStringLiteral("pictures/Poster (lost).png");
    EXPECT_EQ(paths, (QStringList{QStringLiteral("pictures/Cork.png"), lost,
                                  QStringLiteral("geometry/Board.bin"),
                                  QStringLiteral("geometry/Poster.bin")}));
    for (const QString& path : paths)
        EXPECT_EQ(tree.Exists(QStringLiteral("board/") + path), path != lost) << path.toStdString();
}

TEST_F(GltfPlugin, RewritesTheGardenShedAndBackWithoutATrace)
{
    Import(QStringLiteral(CORSYNC_EXAMPLES "/garden-shed"), QStringLiteral("shed"));
    const FileTree::Snapshot before = tree.Contents();
    for (const QString& file :
         {QStringLiteral("shed/scene/Work bench.gltf"), QStringLiteral("shed/Lantern.glb")}) {
        const Links links = Read(file);
        Links moved = links;
        for (Link& link : moved)
            link.second.prepend(QStringLiteral("ganz wo anders/"));
        EXPECT_TRUE(Repath(file, moved));
        EXPECT_EQ(Read(file), moved);
        EXPECT_TRUE(Repath(file, links));
    }
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(GltfPlugin, EveryBadExampleFailsWithItsMessage)
{
    Import(QStringLiteral(CORSYNC_EXAMPLES "/bad"), QStringLiteral("bad"));
    const QPair<QString, QString> rows[] = {
        {QStringLiteral("malformed.gltf"), QStringLiteral("Invalid value. (byte 58)")},
        {QStringLiteral("truncated.glb"),
         QStringLiteral("the header gives a length of 100 bytes, the file has 94 (byte 8)")},
        {QStringLiteral("lying-length.glb"),
         QStringLiteral("a chunk of 4294967280 bytes where 80 are left (byte 12)")},
        {QStringLiteral("nul-in-uri.gltf"),
         QStringLiteral("the path of link /images/0/uri holds a NUL character")},
        {QStringLiteral("long-uri.gltf"),
         QStringLiteral(
             "the path of link /images/1/uri has 10000 characters; a link can have 259")},
    };
    ASSERT_EQ(tree.Contents(QStringLiteral("bad")).size(), qsizetype(std::size(rows)));
    for (const auto& [name, message] : rows) {
        const QString file = QStringLiteral("bad/") + name;
        EXPECT_EQ(ReadFailure(file, tree.Read(file)), message) << name.toStdString();
    }
}

TEST_F(GltfPlugin, FindsEveryResourceOfASceneThatAnotherProgramExported)
{
    Import(QStringLiteral(CORSYNC_CORPUS "/blender-scene"), QStringLiteral("scene"));
    const Links links = Read(QStringLiteral("scene/Muster und Maße.gltf"));
    QStringList found = Paths(links);
    found.append(QStringLiteral("Muster und Maße.gltf"));
    found.sort();
    EXPECT_EQ(found, QStringList(tree.Contents(QStringLiteral("scene")).keys()));
    EXPECT_EQ(links.size(), 37);
}

TEST_F(GltfPlugin, RewritesASceneThatAnotherProgramExportedByteForByte)
{
    Import(QStringLiteral(CORSYNC_CORPUS "/blender-scene"), QStringLiteral("scene"));
    const QString file = QStringLiteral("scene/Muster und Maße.gltf");
    QByteArray expected = tree.Read(file);
    Links links = Read(file);
    for (Link& link : links)
        link.second.prepend(QStringLiteral("../"));
    expected.replace("\"Bilder%20f", "\"../Bilder%20f");
    expected.replace("\"Muster und Ma\\u00dfe.bin\"", "\"../Muster%20und%20Ma%C3%9Fe.bin\"");
    // The exporter keeps fewer characters than a path may hold.
    EXPECT_TRUE(Repath(file, links)) << context.lines.join(u'\n').toStdString();
    QByteArray actual = tree.Read(file);
    actual.replace("abc=d", "abc%3Dd");
    EXPECT_TRUE(actual == expected);
    EXPECT_EQ(Read(file), links);
}

} // namespace Halvern::Test
