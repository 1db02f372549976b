// SPDX-License-Identifier: Apache-2.0

// What changed on which side since the last import decides what the next one does.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

/// work/proj/top.svg links ../lib/part.bin; both are in cloud/Demo.
class ThreeWays : public ScenarioFixture
{
protected:
    ThreeWays()
    {
        Design(u"work/proj/top.svg"_s, {u"../lib/part.bin"_s}, "first");
        tree.File(u"work/lib/part.bin"_s, "part");
        EXPECT_EQ(Bring().exitCode, 0);
        imported = tree.Read(TopCopy);
    }
    ImportReport Bring(const QStringList& options = {}) const
    {
        return Report(QStringList{u"proj/top.svg"_s, u"--to"_s, u"Demo"_s} + options);
    }
    void EditSource() { Save(TopSource, DesignFile(TopSource, {u"../lib/part.bin"_s}, "second")); }
    void EditCopy() { Save(TopCopy, DesignFile(TopCopy, {u"lib/part.bin"_s}, "mine")); }

    const QString TopSource = u"work/proj/top.svg"_s;
    const QString TopCopy = u"cloud/Demo/top.svg"_s;
    const QByteArray Second = DesignFile(u"a.svg"_s, {u"lib/part.bin"_s}, "second");
    const QByteArray Mine = DesignFile(u"a.svg"_s, {u"lib/part.bin"_s}, "mine");
    QByteArray imported;
};

} // namespace

TEST_F(ThreeWays, AnEditedSourceIsUpdatedWithoutAQuestionAndTheOldCopyIsInTheBaseStore)
{
    EditSource();
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(TopSource), u"updated"_s);
    EXPECT_EQ(report.StatusOf(u"work/lib/part.bin"_s), u"unchanged"_s);
    EXPECT_EQ(tree.Read(TopCopy), Second);
    EXPECT_TRUE(BaseStoreHolds(imported));
    EXPECT_EQ(Bring().Statuses(), QStringList(2, u"unchanged"_s));
}

TEST_F(ThreeWays, AnEditedPartIsUpdatedWithoutAQuestion)
{
    Save(u"work/lib/part.bin"_s, "second part");
    const FileStamp top = Stamp(TopCopy);
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/part.bin"_s), u"updated"_s);
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/part.bin"_s), "second part");
    EXPECT_TRUE(BaseStoreHolds("part"));
    EXPECT_EQ(Stamp(TopCopy), top);
}

TEST_F(ThreeWays, AnEditedCopyIsLeftAndTheLineSaysSo)
{
    EditCopy();
    const FileStamp before = Stamp(TopCopy);
    for (int run = 0; run < 2; ++run) {
        const ImportReport report = Bring();
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(TopSource), u"left"_s);
        EXPECT_EQ(Stamp(TopCopy), before);
    }
    const CommandResult plain = Import({u"proj/top.svg"_s, u"--to"_s, u"Demo"_s});
    EXPECT_FALSE(plain.Lines().filter(u"left "_s).isEmpty()) << ::testing::PrintToString(plain);
    // Edited in the cloud folder, then in the source: that is a conflict, however long between.
    EditSource();
    EXPECT_EQ(Bring().exitCode, 6);
}

TEST_F(ThreeWays, EditsOnBothSidesAreAConflictThatSaysWhatChangedWhenAndNothingIsCopied)
{
    EditSource();
    EditCopy();
    Save(u"work/lib/part.bin"_s, "second part");
    const auto before = Stamps(u"cloud"_s);
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 6) << ::testing::PrintToString(report);
    ASSERT_EQ(report.conflicts.size(), 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.conflicts[0][u"kind"].toString(), u"both-changed"_s);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
    const CommandResult plain = Import({u"proj/top.svg"_s, u"--to"_s, u"Demo"_s});
    const QStringList lines = plain.Lines().filter(u"conflict "_s);
    ASSERT_EQ(lines.size(), 1) << ::testing::PrintToString(plain);
    EXPECT_TRUE(lines[0].contains(u"source"_s) && lines[0].contains(u"copy"_s));
    const QString year = QString::number(QDateTime::currentDateTime().date().year());
    EXPECT_EQ(plain.out.count(year) >= 2, true) << ::testing::PrintToString(plain);
    EXPECT_TRUE(plain.err.contains(u"--on-conflict"_s)) << ::testing::PrintToString(plain);
}

TEST_F(ThreeWays, AConflictIsNotSettledByThePolicyForForeignFiles)
{
    EditSource();
    EditCopy();
    for (const QString& policy : {u"keep"_s, u"rename"_s, u"replace"_s}) {
        EXPECT_EQ(Bring({u"--collisions"_s, policy}).exitCode, 6) << policy.toStdString();
        EXPECT_EQ(tree.Read(TopCopy), Mine);
    }
}

TEST_F(ThreeWays, OnConflictKeepLeavesTheCopy)
{
    EditSource();
    EditCopy();
    const FileStamp before = Stamp(TopCopy);
    for (int run = 0; run < 2; ++run) {
        const ImportReport report = Bring({u"--on-conflict"_s, u"keep"_s});
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(Stamp(TopCopy), before);
    }
}

TEST_F(ThreeWays, OnConflictReplaceTakesTheSourceAndKeepsTheCopyInTheBaseStore)
{
    EditSource();
    EditCopy();
    const ImportReport report = Bring({u"--on-conflict"_s, u"replace"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(TopCopy), Second);
    EXPECT_TRUE(BaseStoreHolds(Mine));
    EXPECT_EQ(Bring().Statuses(), QStringList(2, u"unchanged"_s));
}

TEST_F(ThreeWays, OnConflictRenamePutsTheSourceBesideTheCopyOnceAndForAll)
{
    EditSource();
    EditCopy();
    const FileStamp before = Stamp(TopCopy);
    const ImportReport report = Bring({u"--on-conflict"_s, u"rename"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(TopSource), u"renamed"_s);
    EXPECT_EQ(Stamp(TopCopy), before);
    EXPECT_EQ(tree.Read(report.Of(TopSource).target), Second);
    const auto all = Stamps(u"cloud"_s);
    EXPECT_EQ(Bring({u"--on-conflict"_s, u"rename"_s}).exitCode, 0);
    EXPECT_EQ(Stamps(u"cloud"_s), all);
}

TEST_F(ThreeWays, OnConflictStopIsWhatHappensWithoutIt)
{
    EditSource();
    EditCopy();
    EXPECT_EQ(Bring({u"--on-conflict"_s, u"stop"_s}).exitCode, 6);
    EXPECT_EQ(tree.Read(TopCopy), Mine);
}

TEST_F(ThreeWays, NobodyIsAskedWithoutATerminal)
{
    EditSource();
    EditCopy();
    const ImportReport report = Bring({u"--on-conflict"_s, u"ask"_s});
    EXPECT_EQ(report.exitCode, 2) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(TopCopy), Mine);
}

TEST_F(ThreeWays, TheSameEditOnBothSidesIsUnchanged)
{
    Save(u"work/lib/part.bin"_s, "the same");
    Save(u"cloud/Demo/lib/part.bin"_s, "the same");
    const auto before = Stamps(u"cloud"_s);
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/part.bin"_s), u"unchanged"_s);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
    Save(u"work/lib/part.bin"_s, "another");
    EXPECT_EQ(Bring().StatusOf(u"work/lib/part.bin"_s), u"updated"_s);
}

TEST_F(ThreeWays, TheSameEditOfLinksOnBothSidesIsRecordedOfBoth)
{
    Design(u"work/proj/own.gltf"_s, {u"own.png"_s});
    tree.File(u"work/proj/own.png"_s, "picture");
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    const QByteArray before = tree.Read(u"work/proj/own.gltf"_s);
    Design(u"work/proj/own.gltf"_s, {u"own.png"_s, u"own.png"_s});
    const QByteArray edited = tree.Read(u"work/proj/own.gltf"_s);
    tree.File(u"cloud/proj/own.gltf"_s, edited);
    const ImportReport alike = Report({u"proj"_s});
    EXPECT_EQ(alike.StatusOf(u"work/proj/own.gltf"_s), u"unchanged"_s)
        << ::testing::PrintToString(alike);

    // The edit of the source is undone: the copy is not what it was then.
    tree.File(u"work/proj/own.gltf"_s, before);
    const ImportReport undone = Report({u"proj"_s, u"--move"_s});
    EXPECT_EQ(undone.exitCode, 0) << ::testing::PrintToString(undone);
    EXPECT_EQ(tree.Read(u"cloud/proj/own.gltf"_s), before);
}

TEST_F(ThreeWays, AFileWithTheSameContentThatSomebodyElsePutThereIsAdopted)
{
    tree.File(u"work/plain.txt"_s, "the same").File(u"cloud/Demo/plain.txt"_s, "the same");
    const FileStamp before = Stamp(u"cloud/Demo/plain.txt"_s);
    const QStringList arguments{u"plain.txt"_s, u"--to"_s, u"Demo"_s};
    EXPECT_EQ(Report(arguments).Statuses(), QStringList{u"unchanged"_s});
    EXPECT_EQ(Stamp(u"cloud/Demo/plain.txt"_s), before);
    Save(u"work/plain.txt"_s, "second");
    EXPECT_EQ(Report(arguments).Statuses(), QStringList{u"updated"_s});
    EXPECT_EQ(tree.Read(u"cloud/Demo/plain.txt"_s), "second");
    EXPECT_TRUE(BaseStoreHolds("the same"));
}

TEST_F(ThreeWays, AForeignFileInTheWayIsACollision)
{
    tree.File(u"work/plain.txt"_s, "ours").File(u"cloud/Demo/plain.txt"_s, "foreign");
    const QStringList arguments{u"plain.txt"_s, u"--to"_s, u"Demo"_s};
    const ImportReport report = Report(arguments);
    EXPECT_EQ(report.exitCode, 6);
    ASSERT_EQ(report.conflicts.size(), 1);
    EXPECT_EQ(report.conflicts[0][u"kind"].toString(), u"target-taken"_s);
    EXPECT_EQ(Report(arguments + QStringList{u"--on-conflict"_s, u"replace"_s}).exitCode, 6);
    EXPECT_EQ(tree.Read(u"cloud/Demo/plain.txt"_s), "foreign");
    EXPECT_EQ(Report(arguments + QStringList{u"--collisions"_s, u"replace"_s}).exitCode, 0);
    EXPECT_TRUE(BaseStoreHolds("foreign"));
}

TEST_F(ThreeWays, ACopyThatWasDeletedIsMadeAgain)
{
    tree.Remove(u"cloud/Demo/lib/part.bin"_s);
    EXPECT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/part.bin"_s), "part");
}

TEST_F(ThreeWays, AForeignFileInThePlaceOfADeletedCopyIsNotReplaced)
{
    // Another file of the same name: its own number, size and time.
    tree.Remove(u"cloud/Demo/lib/part.bin"_s).File(u"cloud/Demo/lib/part.bin"_s, "foreign");
    Save(u"work/lib/part.bin"_s, "second part");
    EXPECT_EQ(Bring().exitCode, 6);
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/part.bin"_s), "foreign");
}

namespace {

class GoneSources : public ScenarioFixture
{
protected:
    GoneSources()
    {
        tree.File(u"work/proj/a.txt"_s, "a").File(u"work/proj/sub/b.txt"_s, "b");
        EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
    }
};

} // namespace

TEST_F(GoneSources, ADeletedOneHasItsCopyListedAndLeft)
{
    tree.Remove(u"work/proj/sub/b.txt"_s);
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/sub/b.txt"_s), u"orphaned"_s);
    EXPECT_EQ(tree.Read(u"cloud/proj/sub/b.txt"_s), "b");
}

TEST_F(GoneSources, ARenamedOneHasItsOldCopyListedAndANewOneMade)
{
    ASSERT_TRUE(QFile::rename(tree.Path(u"work/proj/a.txt"_s), tree.Path(u"work/proj/c.txt"_s)));
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.StatusOf(u"work/proj/a.txt"_s), u"orphaned"_s);
    EXPECT_EQ(report.StatusOf(u"work/proj/c.txt"_s), u"copied"_s);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "a");
}

TEST_F(GoneSources, PruneParksTheirCopiesInTheBaseStore)
{
    tree.Remove(u"work/proj/sub/b.txt"_s);
    const ImportReport report = Report({u"proj"_s, u"--prune"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/sub/b.txt"_s), u"pruned"_s);
    EXPECT_FALSE(tree.Exists(u"cloud/proj/sub/b.txt"_s));
    EXPECT_TRUE(BaseStoreHolds("b"));
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "a");
    EXPECT_EQ(Report({u"proj"_s, u"--prune"_s}).Statuses(), QStringList{u"unchanged"_s});
}

TEST_F(GoneSources, PruneLeavesACopyThatItsOwnerEdited)
{
    tree.Remove(u"work/proj/sub/b.txt"_s);
    Save(u"cloud/proj/sub/b.txt"_s, "mine");
    Report({u"proj"_s, u"--prune"_s});
    EXPECT_EQ(tree.Read(u"cloud/proj/sub/b.txt"_s), "mine");
}

TEST_F(GoneSources, AMovedFileIsNoOrphanAndIsNotPruned)
{
    tree.File(u"work/moved/m.txt"_s, "m").File(u"work/moved/n.txt"_s, "n");
    ASSERT_EQ(Report({u"moved"_s, u"--move"_s}).exitCode, 0);
    tree.File(u"work/moved/o.txt"_s, "o");
    const FileStamp before = Stamp(u"cloud/moved/m.txt"_s);
    const ImportReport report = Report({u"moved"_s, u"--prune"_s});
    EXPECT_EQ(report.Statuses(), QStringList{u"copied"_s}) << ::testing::PrintToString(report);
    EXPECT_EQ(Stamp(u"cloud/moved/m.txt"_s), before);
}

TEST_F(GoneSources, PruneOfOneProjectLeavesTheOthersAndForeignFilesAlone)
{
    tree.File(u"work/other/x.txt"_s, "x").File(u"cloud/proj/foreign.txt"_s, "foreign");
    ASSERT_EQ(Report({u"other"_s}).exitCode, 0);
    tree.Remove(u"work/other/x.txt"_s);
    ASSERT_EQ(Report({u"proj"_s, u"--prune"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/other/x.txt"_s), "x");
    EXPECT_EQ(tree.Read(u"cloud/proj/foreign.txt"_s), "foreign");
}

TEST_F(GoneSources, ACopyOfALinkedFileThatNothingLinksAnyMoreIsListed)
{
    Design(u"work/top.gltf"_s, {u"lib/p.bin"_s}, "first");
    tree.File(u"work/lib/p.bin"_s, "p");
    ASSERT_EQ(Report({u"top.gltf"_s, u"--to"_s, u"Demo"_s}).exitCode, 0);
    Save(u"work/top.gltf"_s, DesignFile(u"top.gltf"_s, {}, "second"));
    const ImportReport report = Report({u"top.gltf"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(report.StatusOf(u"work/top.gltf"_s), u"updated"_s)
        << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/p.bin"_s), u"orphaned"_s);
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/p.bin"_s), "p");
}

TEST_F(ThreeWays, AReadOnlyCopyIsNotUpdatedAndThePlanSaysSo)
{
    EditSource();
    Save(u"work/lib/part.bin"_s, "second part");
    const QString copy = tree.Path(TopCopy);
    ASSERT_TRUE(QFile::setPermissions(copy, QFile::ReadOwner));
    const FileStamp before = Stamp(TopCopy);
    const ImportReport planned = Bring({u"--dry-run"_s});
    for (const QStringList& options : {QStringList(), QStringList{u"--force"_s}}) {
        const ImportReport report = Bring(options);
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.Of(TopSource).remark, u"target-read-only"_s);
        EXPECT_EQ(report.StatusOf(u"work/lib/part.bin"_s), u"updated"_s);
        EXPECT_EQ(Stamp(TopCopy), before);
        if (options.isEmpty()) {
            EXPECT_EQ(report.Lines(), planned.Lines());
        }
    }
    ASSERT_TRUE(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
    EXPECT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(tree.Read(TopCopy), Second);
}

TEST_F(ThreeWays, AReadOnlyFileInTheWayIsNotReplacedAndThePlanSaysSo)
{
    tree.File(u"work/proj/a.txt"_s, "a").File(u"cloud/Demo/a.txt"_s, "foreign");
    const QString foreign = tree.Path(u"cloud/Demo/a.txt"_s);
    ASSERT_TRUE(QFile::setPermissions(foreign, QFile::ReadOwner));
    for (const QStringList& dry : {QStringList{u"--dry-run"_s}, QStringList()}) {
        const ImportReport report = Report(
            QStringList{u"proj/a.txt"_s, u"--to"_s, u"Demo"_s, u"--collisions"_s, u"replace"_s} +
            dry);
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.Of(u"work/proj/a.txt"_s).remark, u"target-read-only"_s);
    }
    EXPECT_EQ(tree.Read(u"cloud/Demo/a.txt"_s), "foreign");
    QFile::setPermissions(foreign, QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(ThreeWays, TheLinksOfAReadOnlyCopyStayAndEveryRunSaysSo)
{
    // Its part gets another place.
    const QString copy = tree.Path(TopCopy);
    ASSERT_TRUE(QFile::setPermissions(copy, QFile::ReadOwner));
    Save(u"work/lib/part.bin"_s, "second part");
    Save(u"cloud/Demo/lib/part.bin"_s, "my part");
    const QStringList options{u"--on-conflict"_s, u"rename"_s};
    const ImportReport planned = Bring(options + QStringList{u"--dry-run"_s});
    for (int run = 0; run < 2; ++run) {
        const ImportReport report = Bring(options);
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.Of(TopSource).remark, u"target-read-only"_s);
        EXPECT_EQ(tree.Read(TopCopy), imported);
        if (run == 0) {
            EXPECT_EQ(report.Lines(), planned.Lines());
        }
    }
    ASSERT_TRUE(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
    EXPECT_EQ(Bring(options).exitCode, 0);
    EXPECT_TRUE(LinksOf(TopCopy).value(0).contains(u"(2)"_s))
        << LinksOf(TopCopy).value(0).toStdString();
}

} // namespace Halvern::Test
