// SPDX-License-Identifier: Apache-2.0

// What an import leaves out or cannot do beside its copies is said.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class LeftOut : public ScenarioFixture
{
protected:
    /// With the database in the folder that is imported.
    ImportReport WithDatabaseInside(const QStringList& options = {}) const
    {
        return ReportOf(Run(QStringList{u"import"_s, u"proj"_s, u"--json"_s, u"--cloud-folder"_s,
                                        tree.Path(u"cloud"_s), u"--database"_s,
                                        tree.Path(u"work/proj/sync.db"_s)} +
                            options));
    }
    static void ExpectSaid(const ImportReport& report, const QString& name)
    {
        const ReportedFile line = report.Of(u"work/proj/"_s + name);
        EXPECT_EQ(line.status, u"skipped"_s)
            << name.toStdString() << ::testing::PrintToString(report);
        EXPECT_FALSE(line.reason.isEmpty());
    }
};

} // namespace

TEST_F(LeftOut, TheSyncDatabaseAndTheBaseStoreInTheSelectionAreLeftOutAndSaid)
{
    tree.File(u"work/proj/a.txt"_s, "first");
    for (int run = 0; run < 2; ++run) {
        const ImportReport report = WithDatabaseInside();
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        ExpectSaid(report, u"sync.db"_s);
    }
    Save(u"work/proj/a.txt"_s, "second");
    ASSERT_EQ(WithDatabaseInside().exitCode, 0);
    ASSERT_TRUE(tree.Exists(u"work/proj/sync.db.base"_s));
    ExpectSaid(WithDatabaseInside(), u"sync.db.base"_s);
    EXPECT_EQ(tree.Contents(u"cloud"_s), (FileTree::Snapshot{{u"proj/a.txt"_s, "second"}}));
}

TEST_F(LeftOut, AMoveLeavesTheSyncDatabaseAndTheBaseStoreWhereTheyAre)
{
    tree.File(u"work/proj/a.txt"_s, "first");
    ASSERT_EQ(WithDatabaseInside().exitCode, 0);
    Save(u"work/proj/a.txt"_s, "second");
    ASSERT_EQ(WithDatabaseInside().exitCode, 0);
    const FileTree::Snapshot kept = tree.Contents(u"work/proj/sync.db.base"_s);
    ASSERT_FALSE(kept.isEmpty());
    ASSERT_EQ(WithDatabaseInside({u"--move"_s}).exitCode, 0);
    EXPECT_FALSE(tree.Exists(u"work/proj/a.txt"_s));
    EXPECT_TRUE(tree.Exists(u"work/proj/sync.db"_s));
    EXPECT_EQ(tree.Contents(u"work/proj/sync.db.base"_s), kept);
}

TEST_F(LeftOut, ALinkedFileThatAPatternExcludesIsShownWithoutBeingAskedFor)
{
    Design(u"work/proj/top.gltf"_s, {u"old.bak"_s});
    tree.File(u"work/proj/old.bak"_s, "old").File(u"work/proj/other.bak"_s, "other");
    const QStringList arguments{u"proj"_s, u"--exclude"_s, u"*.bak"_s};
    const CommandResult result = Import(arguments);
    const QStringList skipped = result.Lines().filter(u"skipped "_s);
    EXPECT_EQ(skipped.filter(u"old.bak"_s).size(), 1) << ::testing::PrintToString(result);
    EXPECT_EQ(skipped.filter(u"other.bak"_s).size(), 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/proj/top.gltf"_s), tree.Read(u"work/proj/top.gltf"_s));
    EXPECT_FALSE(tree.Exists(u"cloud/proj/old.bak"_s));
}

TEST_F(LeftOut, AnOrphanThatCannotBeParkedStaysAndIsAProblem)
{
    tree.File(u"work/proj/a.txt"_s, "a").File(u"work/proj/b.txt"_s, "b");
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    tree.Remove(u"work/proj/b.txt"_s);
    if (tree.Exists(u"sync.db.base"_s))
        tree.Remove(u"sync.db.base"_s);
    tree.File(u"sync.db.base"_s, "a file where the folder must be");
    const ImportReport report = Report({u"proj"_s, u"--prune"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    const ReportedFile line = report.Of(u"work/proj/b.txt"_s);
    EXPECT_EQ(line.status, u"orphaned"_s) << ::testing::PrintToString(report);
    EXPECT_FALSE(line.reason.isEmpty());
    EXPECT_EQ(tree.Read(u"cloud/proj/b.txt"_s), "b");
    tree.Remove(u"sync.db.base"_s);
    const ImportReport again = Report({u"proj"_s, u"--prune"_s});
    EXPECT_EQ(again.exitCode, 0) << ::testing::PrintToString(again);
    EXPECT_EQ(again.StatusOf(u"work/proj/b.txt"_s), u"pruned"_s);
    EXPECT_FALSE(tree.Exists(u"cloud/proj/b.txt"_s));
    EXPECT_TRUE(BaseStoreHolds("b"));
}

} // namespace Halvern::Test
