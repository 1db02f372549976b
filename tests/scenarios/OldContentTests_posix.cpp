// SPDX-License-Identifier: Apache-2.0

// Replacements that fail half-way, and base stores that lead elsewhere.

#include "ChildRights.h"
#include "Mounts.h"
#include "ScenarioFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

namespace {

/// Plug-ins run in the command's own process: what makes them run apart may be larger than the
/// limit.
class HalfReplacements : public ScenarioFixture
{
protected:
    HalfReplacements()
    {
        tree.File(u"work/proj/a.bin"_s, "first a").File(u"work/proj/z.txt"_s, "first z");
        EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
    }
};

} // namespace

TEST_F(HalfReplacements, OnADiskThatRefusesTheRestLeaveTheOldFileUnderItsName)
{
    const FileStamp before = Stamp(u"cloud/proj/a.bin"_s);
    Save(u"work/proj/a.bin"_s, PatternBytes(3'000'000));
    Save(u"work/proj/z.txt"_s, "second z");
    QProcess process;
    Prepare(process, ImportArguments({u"proj"_s, u"--json"_s, u"--isolate"_s, u"never"_s}));
    LimitFileSize(process, 1'500'000);
    process.start();
    const ImportReport report = ReportOf(Finish(process));
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/a.bin"_s), u"failed"_s);
    EXPECT_FALSE((report.result.out + report.result.err).contains(u".corsync-"_s))
        << ::testing::PrintToString(report);
    EXPECT_EQ(Stamp(u"cloud/proj/a.bin"_s), before);
    EXPECT_EQ(tree.Read(u"cloud/proj/z.txt"_s), "second z");
    EXPECT_EQ(Leftovers(), QStringList());
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
    EXPECT_TRUE(tree.Read(u"cloud/proj/a.bin"_s) == tree.Read(u"work/proj/a.bin"_s));
    EXPECT_TRUE(BaseStoreHolds("first a"));
}

TEST_F(HalfReplacements, OfAMoveKeepTheSource)
{
    const QByteArray big = PatternBytes(3'000'000);
    Save(u"work/proj/a.bin"_s, big);
    QProcess process;
    Prepare(process,
            ImportArguments({u"proj"_s, u"--move"_s, u"--json"_s, u"--isolate"_s, u"never"_s}));
    LimitFileSize(process, 1'500'000);
    process.start();
    EXPECT_EQ(ReportOf(Finish(process)).exitCode, 1);
    EXPECT_TRUE(tree.Read(u"work/proj/a.bin"_s) == big);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.bin"_s), "first a");
}

TEST_F(HalfReplacements, WhoseOldFileCannotBeKeptOnAFullBaseStoreAreNotDone)
{
    tree.Folder(u"sync.db.base"_s);
    Save(u"work/proj/a.bin"_s, PatternBytes(300'000));
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    const FileStamp before = Stamp(u"cloud/proj/a.bin"_s);
    Save(u"work/proj/a.bin"_s, "third a");
    tree.Remove(u"sync.db.base"_s).Folder(u"sync.db.base"_s);
    const Mount disk = Mount::Small(tree.Path(u"sync.db.base"_s), 100'000);
    ASSERT_TRUE(disk.IsMounted());
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(Stamp(u"cloud/proj/a.bin"_s), before);
}

TEST_F(HalfReplacements, WhoseOldFileWouldGoThroughASymbolicLinkAreNotDone)
{
    tree.Folder(u"outside"_s);
    if (tree.Exists(u"sync.db.base"_s))
        tree.Remove(u"sync.db.base"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"outside"_s), tree.Path(u"sync.db.base"_s)));
    Save(u"work/proj/a.bin"_s, "second a");
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.bin"_s), "first a");
    EXPECT_EQ(tree.Contents(u"outside"_s), FileTree::Snapshot());
}

} // namespace Halvern::Test
