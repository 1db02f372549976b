// SPDX-License-Identifier: Apache-2.0

// Another disk is mounted at a folder in the cloud folder: a rename cannot reach it.

#include "Mounts.h"
#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class MountedFolders : public ScenarioFixture
{
protected:
    MountedFolders()
        : disk(Mount::Small(tree.Folder(u"cloud/proj"_s).Path(u"cloud/proj"_s), 1'000'000))
    {
        tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.tlk\n")
            .File(u"work/lib/part.tlk"_s, "part\n")
            .File(u"work/proj/a.txt"_s, "first");
    }

    Mount disk;
};

} // namespace

TEST_F(MountedFolders, GetCopiesAndUpdatesLikeAllOthers)
{
    ASSERT_TRUE(disk.IsMounted());
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    Save(u"work/proj/a.txt"_s, "second");
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/a.txt"_s), u"updated"_s);
    EXPECT_TRUE(BaseStoreHolds("first"));
    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u"proj/a.txt"_s, "second"},
                                  {u"proj/lib/part.tlk"_s, "part\n"},
                                  {u"proj/top.tlk"_s, "link 1 lib/part.tlk\n"}}));
}

TEST_F(MountedFolders, KeepAForeignFileAndTakeItForACollision)
{
    ASSERT_TRUE(disk.IsMounted());
    tree.File(u"cloud/proj/a.txt"_s, "foreign");
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 6);
    EXPECT_EQ(Report({u"proj"_s, u"--collisions"_s, u"rename"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "foreign");
    EXPECT_EQ(tree.Read(u"cloud/proj/a (2).txt"_s), "first");
}

TEST_F(MountedFolders, GiveUpTheirSourcesWhenTheirCopiesAreThere)
{
    ASSERT_TRUE(disk.IsMounted());
    const ImportReport report = Report({u"proj"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_FALSE(tree.Exists(u"work/proj"_s));
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "first");
}

TEST_F(MountedFolders, ThatAreFullKeepWhatTheyHoldAndFailWhatDoesNotFit)
{
    ASSERT_TRUE(disk.IsMounted());
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    Save(u"work/proj/a.txt"_s, PatternBytes(3'000'000));
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "first");
    EXPECT_EQ(Leftovers(), QStringList());
}

} // namespace Halvern::Test
