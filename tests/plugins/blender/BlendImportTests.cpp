// SPDX-License-Identifier: Apache-2.0

// Whole imports by the command with the built plug-ins, of scenes with sets.

#include "BlendFile.h"
#include "CommandFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class BlendImport : public CommandFixture
{
protected:
    /// A scene with one image: source 2 is a sequence, 6 is tiled.
    void MakeScene(const char* path, int source, std::initializer_list<int> tiles = {})
    {
        BlendFile content;
        content.Add("IM", "Image", {{"id.name", "IMa"}, {"name", path}, {"source", source}});
        for (const int tile : tiles)
            content.Add("DATA", "ImageTile", {{"tile_number", tile}});
        tree.File(scene, content.Bytes());
    }

    CommandResult ImportScene(const QStringList& arguments = {}) const
    {
        return Import(QStringList{u"s/a.blend"_s, u"--to"_s, u"Demo"_s} + arguments);
    }

    const QString scene = u"work/s/a.blend"_s;
};

} // namespace

TEST_F(BlendImport, AFrameMadeAfterAnImportComesWithTheNextOne)
{
    MakeScene("//f/w_0001.png", 2);
    tree.File(u"work/s/f/w_0001.png"_s).File(u"work/s/f/w_0002.png"_s);
    ImportScene();
    const FileTree::Snapshot before = Cloud();
    ASSERT_EQ(before.keys(),
              (QStringList{u"Demo/a.blend"_s, u"Demo/f/w_0001.png"_s, u"Demo/f/w_0002.png"_s}));
    tree.File(u"work/s/f/w_0003.png"_s, "new");
    const CommandResult result = ImportScene();
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    FileTree::Snapshot after = before;
    after.insert(u"Demo/f/w_0003.png"_s, "new");
    EXPECT_EQ(Cloud(), after);
}

TEST_F(BlendImport, TilesOfOlderFilesComeTogetherAndTheFileNamesTheirNewFolder)
{
    MakeScene("//../k/h.1001.png", 6, {1001, 1002, 1011});
    for (const QString& tile : {u"1001"_s, u"1002"_s, u"1011"_s})
        tree.File(u"work/k/h."_s + tile + u".png"_s, tile.toUtf8());
    const CommandResult result = ImportScene();
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    FileTree::Snapshot cloud = Cloud();
    EXPECT_TRUE(cloud.take(u"Demo/a.blend"_s).contains(QByteArray("//k/h.1001.png\0", 15)));
    EXPECT_EQ(cloud, (FileTree::Snapshot{{u"Demo/k/h.1001.png"_s, "1001"},
                                         {u"Demo/k/h.1002.png"_s, "1002"},
                                         {u"Demo/k/h.1011.png"_s, "1011"}}));
}

} // namespace Halvern::Test
