// SPDX-License-Identifier: Apache-2.0

// Copies that came along because something linked them, and that nothing links any more.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

/// work/proj/top.gltf links ../lib/sub.gltf, which links part.bin; all are in cloud/Demo.
class LinkedNoMore : public ScenarioFixture
{
protected:
    LinkedNoMore()
    {
        Design(Top, {u"../lib/sub.gltf"_s}, "first");
        Design(Sub, {u"part.bin"_s}, "sub");
        tree.File(Part, "part");
        EXPECT_EQ(Bring().exitCode, 0);
    }
    ImportReport Bring(const QStringList& options = {}) const
    {
        return Report(QStringList{u"proj"_s, u"--to"_s, u"Demo"_s} + options);
    }
    void Unlink() { Save(Top, DesignFile(Top, {}, "second")); }

    const QString Top = u"work/proj/top.gltf"_s;
    const QString Sub = u"work/lib/sub.gltf"_s;
    const QString Part = u"work/lib/part.bin"_s;
    const QString SubCopy = u"cloud/Demo/proj/lib/sub.gltf"_s;
    const QString PartCopy = u"cloud/Demo/proj/lib/part.bin"_s;
};

} // namespace

TEST_F(LinkedNoMore, AreListedWithAllThatOnlyTheyLinkAndByEveryRunUntilTheyAreGone)
{
    Unlink();
    const ImportReport planned = Bring({u"--dry-run"_s});
    for (int run = 0; run < 3; ++run) {
        const ImportReport report = Bring();
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(Sub), u"orphaned"_s) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(Part), u"orphaned"_s) << ::testing::PrintToString(report);
        EXPECT_EQ(report.files.size(), 3);
        if (run == 0) {
            EXPECT_EQ(report.Lines(), planned.Lines());
        }
        EXPECT_EQ(tree.Read(PartCopy), "part");
    }
    const ImportReport pruned = Bring({u"--prune"_s});
    EXPECT_EQ(pruned.StatusOf(Sub), u"pruned"_s) << ::testing::PrintToString(pruned);
    EXPECT_EQ(pruned.StatusOf(Part), u"pruned"_s);
    EXPECT_FALSE(tree.Exists(SubCopy));
    EXPECT_FALSE(tree.Exists(PartCopy));
    EXPECT_TRUE(BaseStoreHolds("part"));
    EXPECT_EQ(Bring({u"--prune"_s}).Statuses(), QStringList{u"unchanged"_s});
}

TEST_F(LinkedNoMore, ArePrunedByTheRunThatNoticesIt)
{
    Unlink();
    EXPECT_EQ(Bring({u"--prune"_s}).StatusOf(Part), u"pruned"_s);
    EXPECT_FALSE(tree.Exists(PartCopy));
}

TEST_F(LinkedNoMore, BecauseTheFileThatLinkedThemIsGoneAreListed)
{
    tree.Remove(Top).File(u"work/proj/other.txt"_s);
    const ImportReport report = Bring();
    EXPECT_EQ(report.StatusOf(Top), u"orphaned"_s) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(Sub), u"orphaned"_s);
    EXPECT_EQ(report.StatusOf(Part), u"orphaned"_s);
    Bring({u"--prune"_s});
    EXPECT_FALSE(tree.Exists(SubCopy));
    EXPECT_FALSE(tree.Exists(u"cloud/Demo/proj/top.gltf"_s));
}

TEST_F(LinkedNoMore, StayWhereAFileThatIsGoneHasACopyThatItsOwnerEdited)
{
    tree.Remove(Top).File(u"work/proj/other.txt"_s);
    Save(u"cloud/Demo/proj/top.gltf"_s, DesignFile(u"top.gltf"_s, {u"lib/sub.gltf"_s}, "mine"));
    const ImportReport report = Bring({u"--prune"_s});
    EXPECT_EQ(report.StatusOf(Top), u"orphaned"_s) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(Part), u"none"_s);
    EXPECT_TRUE(tree.Exists(SubCopy) && tree.Exists(PartCopy));
}

TEST_F(LinkedNoMore, AreListedThoughTheirSourcesAreGoneToo)
{
    Unlink();
    tree.Remove(u"work/lib"_s);
    EXPECT_EQ(Bring().StatusOf(Part), u"orphaned"_s);
    EXPECT_EQ(Bring({u"--prune"_s}).StatusOf(Part), u"pruned"_s);
}

TEST_F(LinkedNoMore, AreNoneWhileAnotherFileLinksThem)
{
    Design(u"work/second/two.gltf"_s, {u"../lib/sub.gltf"_s}, "two");
    ASSERT_EQ(Report({u"second"_s, u"--to"_s, u"Demo"_s}).exitCode, 0);
    Unlink();
    for (int run = 0; run < 2; ++run) {
        const ImportReport report = Bring({u"--prune"_s});
        EXPECT_EQ(report.StatusOf(Sub), u"none"_s) << ::testing::PrintToString(report);
        EXPECT_TRUE(tree.Exists(SubCopy) && tree.Exists(PartCopy));
    }
    // The other one, too, links them no more.
    Save(u"work/second/two.gltf"_s, DesignFile(u"two.gltf"_s, {}, "second two"));
    const ImportReport report = Report({u"second"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(report.StatusOf(Part), u"orphaned"_s) << ::testing::PrintToString(report);
}

TEST_F(LinkedNoMore, AreNoneWhileAnotherProjectLinksThem)
{
    Design(u"work/second/two.gltf"_s, {u"../lib/part.bin"_s}, "two");
    ASSERT_EQ(Report({u"second"_s, u"--to"_s, u"Two"_s}).exitCode, 0);
    Unlink();
    const ImportReport report = Bring({u"--prune"_s});
    EXPECT_EQ(report.StatusOf(Sub), u"pruned"_s) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(Part), u"none"_s);
    EXPECT_EQ(tree.Read(PartCopy), "part");
}

TEST_F(LinkedNoMore, AreNoneWhenTheyWereGivenByThemselves)
{
    Design(u"work/one/a.gltf"_s, {u"b.bin"_s}, "a");
    tree.File(u"work/one/b.bin"_s, "b");
    const QStringList holder{u"one/a.gltf"_s, u"--to"_s, u"One"_s, u"--prune"_s};
    ASSERT_EQ(Report(holder).exitCode, 0);
    // It is the copy that is there.
    const QStringList itself{u"one/b.bin"_s, u"--to"_s, u"One"_s};
    ASSERT_EQ(Report(itself).Statuses(), QStringList{u"unchanged"_s});
    ASSERT_EQ(Report(holder).Statuses(), QStringList(2, u"unchanged"_s));
    Save(u"work/one/a.gltf"_s, DesignFile(u"a.gltf"_s, {}, "second a"));
    const ImportReport report = Report(holder);
    EXPECT_EQ(report.Statuses(), QStringList{u"updated"_s}) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/One/b.bin"_s), "b");
}

TEST_F(LinkedNoMore, AreNoneWhenTheLinksCouldNotBeReadThisTime)
{
    Save(Sub, "{ this is no glTF");
    const ImportReport broken = Bring({u"--prune"_s});
    EXPECT_NE(broken.exitCode, 0);
    EXPECT_EQ(broken.StatusOf(Part), u"none"_s) << ::testing::PrintToString(broken);
    EXPECT_EQ(tree.Read(PartCopy), "part");
    Save(Sub, DesignFile(Sub, {u"part.bin"_s}, "sub again"));
    const ImportReport report = Bring({u"--prune"_s});
    EXPECT_EQ(report.StatusOf(Part), u"unchanged"_s) << ::testing::PrintToString(report);
}

TEST_F(LinkedNoMore, AreNoneForAnImportThatDoesNotFollowTheirLinks)
{
    for (const QStringList& options :
         {QStringList{u"--types"_s, u"svg"_s}, QStringList{u"--direct-links-only"_s},
          QStringList{u"--exclude"_s, u"*.bin"_s}, QStringList{u"--links-only"_s}}) {
        const ImportReport report = Bring(options + QStringList{u"--prune"_s});
        EXPECT_FALSE(report.Statuses().contains(u"pruned"_s)) << ::testing::PrintToString(report);
        EXPECT_TRUE(tree.Exists(SubCopy) && tree.Exists(PartCopy));
    }
}

TEST_F(LinkedNoMore, AreNoneForAnImportOfOtherFiles)
{
    tree.File(u"work/other/x.txt"_s);
    const ImportReport report = Report({u"other"_s, u"--to"_s, u"Demo"_s, u"--prune"_s});
    EXPECT_EQ(report.Statuses(), QStringList{u"copied"_s}) << ::testing::PrintToString(report);
    // Nor what was brought without the file that links it.
    Design(u"work/third/three.gltf"_s, {u"own.bin"_s});
    tree.File(u"work/third/own.bin"_s);
    ASSERT_EQ(Report({u"third/three.gltf"_s, u"--to"_s, u"Demo"_s, u"--links-only"_s}).exitCode, 0);
    const ImportReport again = Report({u"other"_s, u"--to"_s, u"Demo"_s, u"--prune"_s});
    EXPECT_EQ(again.Statuses(), QStringList{u"unchanged"_s}) << ::testing::PrintToString(again);
}

TEST_F(LinkedNoMore, AreLeftByPruneWhenTheirOwnerEditedThem)
{
    Unlink();
    Save(PartCopy, "mine");
    const ImportReport report = Bring({u"--prune"_s});
    EXPECT_EQ(report.StatusOf(Part), u"orphaned"_s) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(PartCopy), "mine");
}

TEST_F(LinkedNoMore, AreNoneAnyMoreOnceTheyAreLinkedAgain)
{
    Unlink();
    ASSERT_EQ(Bring().StatusOf(Part), u"orphaned"_s);
    Save(Top, DesignFile(Top, {u"../lib/sub.gltf"_s}, "third"));
    const ImportReport report = Bring({u"--prune"_s});
    EXPECT_EQ(report.StatusOf(Part), u"unchanged"_s) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(PartCopy), "part");
}

TEST_F(LinkedNoMore, ThatLinkEachOtherAreListedAllTheSame)
{
    Save(Sub, DesignFile(Sub, {u"ring.gltf"_s}, "ring"));
    Design(u"work/lib/ring.gltf"_s, {u"sub.gltf"_s}, "ring");
    ASSERT_EQ(Bring().exitCode, 0);
    Unlink();
    const ImportReport report = Bring({u"--prune"_s});
    EXPECT_EQ(report.StatusOf(Sub), u"pruned"_s) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/ring.gltf"_s), u"pruned"_s);
}

TEST_F(LinkedNoMore, OfAGoneSourceThatAnotherProjectLinksStayWhereTheyAre)
{
    tree.File(u"work/proj/inner.bin"_s, "inner");
    ASSERT_EQ(Bring().exitCode, 0);
    Design(u"work/second/two.gltf"_s, {u"../proj/inner.bin"_s}, "two");
    ASSERT_EQ(Report({u"second"_s, u"--to"_s, u"Two"_s}).exitCode, 0);
    tree.Remove(u"work/proj/inner.bin"_s);
    const ImportReport report = Bring({u"--prune"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/inner.bin"_s), u"orphaned"_s);
    EXPECT_TRUE(report.Of(u"work/proj/inner.bin"_s).reason.contains(u"another copy links it"_s));
    EXPECT_EQ(tree.Read(u"cloud/Demo/proj/inner.bin"_s), "inner");
}

TEST_F(LinkedNoMore, AreEarlierCopiesThatStayedForAnotherProjectOnceThatHasItsOwn)
{
    Design(u"work/second/two.gltf"_s, {u"../lib/part.bin"_s}, "two");
    ASSERT_EQ(Report({u"second"_s, u"--to"_s, u"Two"_s}).exitCode, 0);
    Save(Part, "second part");
    const ImportReport renamed = Bring({u"--prune"_s});
    EXPECT_EQ(renamed.StatusOf(Part), u"renamed"_s) << ::testing::PrintToString(renamed);
    EXPECT_EQ(tree.Read(PartCopy), "part");
    ASSERT_EQ(Report({u"second"_s, u"--to"_s, u"Two"_s}).exitCode, 0);
    const ImportReport report = Bring({u"--prune"_s});
    EXPECT_TRUE(report.Statuses().contains(u"pruned"_s)) << ::testing::PrintToString(report);
    EXPECT_FALSE(tree.Exists(PartCopy));
    EXPECT_TRUE(BaseStoreHolds("part"));
    EXPECT_EQ(tree.Read(renamed.Of(Part).target), "second part");
}

TEST_F(LinkedNoMore, StayWhileTheFileThatLinkedThemCouldNotBeMadeAnew)
{
    Unlink();
    QFile(tree.Path(u"cloud/Demo/proj/top.gltf"_s))
        .setPermissions(QFile::ReadOwner | QFile::ReadUser);
    const ImportReport report = Bring({u"--prune"_s});
    QFile(tree.Path(u"cloud/Demo/proj/top.gltf"_s))
        .setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    EXPECT_EQ(report.StatusOf(Top), u"failed"_s) << ::testing::PrintToString(report);
    EXPECT_TRUE(tree.Exists(SubCopy) && tree.Exists(PartCopy));
    EXPECT_EQ(Bring({u"--prune"_s}).StatusOf(Part), u"pruned"_s);
}

TEST_F(LinkedNoMore, AreForetoldAsPrunedByADryRun)
{
    Design(u"work/second/two.gltf"_s, {u"../lib/part.bin"_s}, "two");
    ASSERT_EQ(Report({u"second"_s, u"--to"_s, u"Two"_s}).exitCode, 0);
    tree.File(u"work/proj/edited.txt"_s, "first").File(u"work/proj/gone.txt"_s, "gone");
    ASSERT_EQ(Bring().exitCode, 0);
    Unlink();
    tree.Remove(u"work/proj/edited.txt"_s).Remove(u"work/proj/gone.txt"_s);
    Save(u"cloud/Demo/proj/edited.txt"_s, "mine");
    const auto before = Stamps(u"cloud"_s);
    const ImportReport planned = Bring({u"--prune"_s, u"--dry-run"_s});
    EXPECT_EQ(planned.StatusOf(Sub), u"pruned"_s) << ::testing::PrintToString(planned);
    EXPECT_EQ(planned.StatusOf(u"work/proj/gone.txt"_s), u"pruned"_s);
    EXPECT_EQ(planned.StatusOf(u"work/proj/edited.txt"_s), u"orphaned"_s);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
    const ImportReport report = Bring({u"--prune"_s});
    EXPECT_EQ(report.Lines(), planned.Lines());
    EXPECT_EQ(report.exitCode, planned.exitCode);
}

} // namespace Halvern::Test
