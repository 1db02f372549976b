// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name.

#include "FormatFixture.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

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
    ExpectResolverLibrary(PluginFile());
}

TEST(GltfPluginLibrary, ItsRegistrationFileNamesIt)
{
    ExpectRegistration(PluginFile(), u"gltf"_s, u"gltf,glb"_s);
}

TEST_F(GltfPlugin, ReadsAndRewritesThroughTheContract)
{
    const QString file = u"Szene/Höhe.gltf"_s;
    tree.File(file, R"({"images":[{"uri":"a%20b.png"}]})");
    EXPECT_EQ(Read(file), (Links{{u"/images/0/uri"_s, u"a b.png"_s}}));
    EXPECT_TRUE(Repath(file, {{u"/images/0/uri"_s, u"../ü.png"_s}}));
    EXPECT_EQ(tree.Contents(),
              (FileTree::Snapshot{{file, R"({"images":[{"uri":"../%C3%BC.png"}]})"}}));
}

TEST_F(GltfPlugin, AFailureReachesTheHostAsAFalseResultAndALogLine)
{
    EXPECT_EQ(ReadFailure(u"a.gltf"_s, "{"), u"Missing a name for object member. (byte 1)"_s);
    EXPECT_FALSE(Repath(u"a.gltf"_s, {{u"/a"_s, u"b"_s}}));
    EXPECT_EQ(context.lines.size(), 2);
}

TEST_F(GltfPlugin, FindsEveryLinkOfTheGardenShed)
{
    Import(QStringLiteral(CORSYNC_EXAMPLES "/garden-shed"), u"shed"_s);
    const Links links = Read(u"shed/scene/Shed.gltf"_s);
    const QString shared = u"../textures/Planks.png"_s;
    EXPECT_EQ(Paths(links),
              (QStringList{shared, shared, u"../textures/Roof tiles.png"_s,
                           u"../textures/Höhe über Grund.png"_s,
                           u"../textures/Poster (spring).png"_s, u"geometry/Walls.bin"_s,
                           u"geometry/Shelf.bin"_s, u"../shared/geometry/Roof.bin"_s,
                           u"../shared/geometry/Ground.bin"_s, u"geometry/Small parts.bin"_s,
                           u"geometry/Small parts.bin"_s, u"../lights/Lantern.ies"_s}));
    for (const QString& path : Paths(links))
        EXPECT_TRUE(tree.Exists(u"shed/scene/"_s + path)) << path.toStdString();
    EXPECT_EQ(Paths(Read(u"shed/scene/Work bench.gltf"_s)),
              (QStringList{shared, u"geometry/Bench.bin"_s}));
    EXPECT_EQ(Paths(Read(u"shed/Lantern.glb"_s)), QStringList{u"textures/Roof tiles.png"_s});
}

TEST_F(GltfPlugin, FindsTheLinkToTheLostPoster)
{
    Import(QStringLiteral(CORSYNC_EXAMPLES "/lost-poster"), u"board"_s);
    const QStringList paths = Paths(Read(u"board/Notice board.gltf"_s));
    const QString lost = u"pictures/Poster (lost).png"_s;
    EXPECT_EQ(paths, (QStringList{u"pictures/Cork.png"_s, lost, u"geometry/Board.bin"_s,
                                  u"geometry/Poster.bin"_s}));
    for (const QString& path : paths)
        EXPECT_EQ(tree.Exists(u"board/"_s + path), path != lost) << path.toStdString();
}

TEST_F(GltfPlugin, RewritesTheGardenShedAndBackWithoutATrace)
{
    Import(QStringLiteral(CORSYNC_EXAMPLES "/garden-shed"), u"shed"_s);
    const FileTree::Snapshot before = tree.Contents();
    for (const QString& file : {u"shed/scene/Work bench.gltf"_s, u"shed/Lantern.glb"_s}) {
        const Links links = Read(file);
        Links moved = links;
        for (Link& link : moved)
            link.second.prepend(u"ganz wo anders/"_s);
        EXPECT_TRUE(Repath(file, moved));
        EXPECT_EQ(Read(file), moved);
        EXPECT_TRUE(Repath(file, links));
    }
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(GltfPlugin, EveryBadExampleFailsWithItsMessage)
{
    Import(QStringLiteral(CORSYNC_EXAMPLES "/bad"), u"bad"_s);
    const QPair<QString, QString> rows[] = {
        {u"malformed.gltf"_s, u"Invalid value. (byte 58)"_s},
        {u"truncated.glb"_s, u"the header gives a length of 100 bytes, the file has 94 (byte 8)"_s},
        {u"lying-length.glb"_s, u"a chunk of 4294967280 bytes where 80 are left (byte 12)"_s},
        {u"nul-in-uri.gltf"_s, u"the path of link /images/0/uri holds a NUL character"_s},
        {u"long-uri.gltf"_s,
         u"the path of link /images/1/uri has 10000 characters; a link can have 259"_s},
    };
    ASSERT_EQ(tree.Contents(u"bad"_s).size(), qsizetype(std::size(rows)));
    for (const auto& [name, message] : rows) {
        const QString file = u"bad/"_s + name;
        EXPECT_EQ(ReadFailure(file, tree.Read(file)), message) << name.toStdString();
    }
}

TEST_F(GltfPlugin, FindsEveryResourceOfASceneThatAnotherProgramExported)
{
    Import(QStringLiteral(CORSYNC_CORPUS "/blender-scene"), u"scene"_s);
    const Links links = Read(u"scene/Muster und Maße.gltf"_s);
    QStringList found = Paths(links);
    found.append(u"Muster und Maße.gltf"_s);
    found.sort();
    EXPECT_EQ(found, QStringList(tree.Contents(u"scene"_s).keys()));
    EXPECT_EQ(links.size(), 37);
}

TEST_F(GltfPlugin, RewritesASceneThatAnotherProgramExportedByteForByte)
{
    Import(QStringLiteral(CORSYNC_CORPUS "/blender-scene"), u"scene"_s);
    const QString file = u"scene/Muster und Maße.gltf"_s;
    QByteArray expected = tree.Read(file);
    Links links = Read(file);
    for (Link& link : links)
        link.second.prepend(u"../"_s);
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
