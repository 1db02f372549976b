// SPDX-License-Identifier: Apache-2.0

// What cannot be listed, read or named has a line, and the exit code says so.

#include "ChildRights.h"
#include "ScenarioFixture.h"

#include <QtCore/QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

class Unreadable : public ScenarioFixture
{
protected:
    Unreadable() { tree.File(u"work/proj/good.txt"_s, "good"); }
    ~Unreadable() override
    {
        for (const QString& closed : m_closed)
            SetMode(closed, 0755);
    }
    void Close(const QString& path, mode_t mode = 0)
    {
        m_closed.append(path);
        SetMode(path, mode);
    }
    /// Under rights that hold for root, too.
    ImportReport ImportPoorly(const QStringList& arguments) const
    {
        QProcess process;
        Prepare(process, ImportArguments(arguments + QStringList{u"--json"_s}));
        GiveOrdinaryRights(process);
        process.start();
        return ReportOf(Finish(process));
    }
    void SetMode(const QString& path, mode_t mode) const
    {
        ::chmod(QFile::encodeName(tree.Path(path)).constData(), mode);
    }
    /// A file whose name are these bytes.
    void RawFile(const QByteArray& name) const
    {
        const QByteArray path = QFile::encodeName(tree.Path(u"work/proj"_s)) + '/' + name;
        const int file = ::open(path.constData(), O_CREAT | O_WRONLY, 0644);
        ASSERT_GE(file, 0);
        ASSERT_EQ(::write(file, "raw", 3), 3);
        ::close(file);
    }

private:
    QStringList m_closed;
};

} // namespace

TEST_F(Unreadable, AFolderThatCannotBeListedIsAFailureAndTheRestIsImported)
{
    tree.File(u"work/proj/closed/secret.txt"_s);
    Close(u"work/proj/closed"_s);
    for (const QStringList& options : {QStringList{u"--dry-run"_s}, QStringList()}) {
        const ImportReport report = ImportPoorly(QStringList{u"proj"_s} + options);
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/proj/closed"_s), u"failed"_s);
        EXPECT_FALSE(report.Of(u"work/proj/closed"_s).reason.isEmpty());
        EXPECT_EQ(report.StatusOf(u"work/proj/good.txt"_s), u"copied"_s);
    }
}

TEST_F(Unreadable, AFolderThatCanBeListedButNotEnteredIsAFailure)
{
    tree.File(u"work/proj/closed/secret.txt"_s);
    Close(u"work/proj/closed"_s, 0444);
    const ImportReport report = ImportPoorly({u"proj"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_FALSE(report.Lines().filter(u"failed work/proj/closed"_s).isEmpty());
}

TEST_F(Unreadable, AFileThatCannotBeReadIsAFailureAndTheRestIsImported)
{
    tree.File(u"work/proj/closed.txt"_s);
    Close(u"work/proj/closed.txt"_s);
    const ImportReport report = ImportPoorly({u"proj"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/closed.txt"_s), u"failed"_s);
    EXPECT_EQ(tree.Read(u"cloud/proj/good.txt"_s), "good");
    EXPECT_FALSE(tree.Exists(u"cloud/proj/closed.txt"_s));
    SetMode(u"work/proj/closed.txt"_s, 0644);
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
}

TEST_F(Unreadable, ALinkedFileThatCannotBeReadIsAFailureAndItsLinkStays)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.txt\n").File(u"work/lib/part.txt"_s, "p");
    Close(u"work/lib/part.txt"_s);
    const ImportReport report = ImportPoorly({u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/part.txt"_s), u"failed"_s);
    EXPECT_EQ(tree.Read(u"cloud/Demo/top.tlk"_s), "link 1 ../lib/part.txt\n");
    SetMode(u"work/lib/part.txt"_s, 0644);
    EXPECT_EQ(Report({u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Demo/top.tlk"_s), "link 1 lib/part.txt\n");
}

TEST_F(Unreadable, ALinkedFileInAFolderThatCannotBeEnteredIsNotCalledMissing)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.txt\n").File(u"work/lib/part.txt"_s, "p");
    Close(u"work/lib"_s);
    const ImportReport report = ImportPoorly({u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s});
    EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/Demo/top.tlk"_s), "link 1 ../lib/part.txt\n");
}

TEST_F(Unreadable, ANameThatIsNoUtf8IsAFailureAndIsShownWithoutItsBytes)
{
    RawFile("bad\xff.txt");
    const CommandResult result = Import({u"proj"_s});
    EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines().filter(u"failed "_s).size(), 1);
    EXPECT_TRUE(result.out.contains(u"bad"_s));
    EXPECT_EQ(tree.Contents(u"cloud/proj"_s), (FileTree::Snapshot{{u"good.txt"_s, "good"}}));
}

TEST_F(Unreadable, AFolderWhoseNameIsNoUtf8IsAFailure)
{
    const QByteArray path = QFile::encodeName(tree.Path(u"work/proj"_s)) + "/folder\xfe";
    ASSERT_EQ(::mkdir(path.constData(), 0755), 0);
    RawFile("folder\xfe/x.txt");
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Statuses().count(u"failed"_s), 1);
}

TEST_F(Unreadable, ANameThatIsNoUtf8KeepsAMovedFolderFromLosingIt)
{
    RawFile("bad\xff.txt");
    EXPECT_EQ(Report({u"proj"_s, u"--move"_s}).exitCode, 1);
    const QByteArray path = QFile::encodeName(tree.Path(u"work/proj"_s)) + "/bad\xff.txt";
    EXPECT_EQ(::access(path.constData(), F_OK), 0);
}

TEST_F(Unreadable, ASourceThatCannotBeDeletedAfterAMoveIsSaid)
{
    Close(u"work/proj"_s, 0555);
    const ImportReport report = ImportPoorly({u"proj"_s, u"--move"_s});
    EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"work/proj/good.txt"_s), "good");
    EXPECT_EQ(tree.Read(u"cloud/proj/good.txt"_s), "good");
    EXPECT_EQ(report.StatusOf(u"work/proj/good.txt"_s), u"copied"_s);
}

TEST_F(Unreadable, ASourceThatCannotBeDeletedSaysWhyAndNotThatItsLinksAreNotInOrder)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 good.txt\n");
    Close(u"work/proj"_s, 0555);
    const ImportReport report = ImportPoorly({u"proj"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    const ReportedFile top = report.Of(u"work/proj/top.tlk"_s);
    EXPECT_EQ(top.sourceStays, u"not-deleted"_s);
    EXPECT_EQ(top.reason, u"The source could not be deleted: proj/top.tlk: Permission denied"_s);
    SetMode(u"work/proj"_s, 0755);
    EXPECT_EQ(Report({u"proj"_s, u"--move"_s}).exitCode, 0);
    EXPECT_FALSE(tree.Exists(u"work/proj"_s));
}

TEST_F(Unreadable, WhatASourceLinksThatCannotBeDeletedStaysWithIt)
{
    tree.File(u"work/closed/top.tlk"_s, "link 1 ../proj/sub.tlk\n")
        .File(u"work/proj/sub.tlk"_s, "link 1 good.txt\n")
        .File(u"work/proj/free.txt"_s, "free");
    Close(u"work/closed"_s, 0555);
    const ImportReport report = ImportPoorly({u"proj"_s, u"closed"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Of(u"work/closed/top.tlk"_s).sourceStays, u"not-deleted"_s);
    EXPECT_EQ(report.Of(u"work/proj/sub.tlk"_s).sourceStays, u"linked"_s);
    EXPECT_EQ(report.Of(u"work/proj/good.txt"_s).sourceStays, u"linked"_s);
    EXPECT_EQ(report.StatusOf(u"work/proj/good.txt"_s), u"copied"_s);
    EXPECT_EQ(tree.Contents(u"work/proj"_s).keys(), (QStringList{u"good.txt"_s, u"sub.tlk"_s}));
}

TEST_F(Unreadable, WhatLiesInAFolderThatCannotBeEnteredIsNoOrphan)
{
    tree.File(u"work/proj/closed/part.txt"_s, "part");
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    for (const mode_t mode : {mode_t(0), mode_t(0444)}) {
        Close(u"work/proj/closed"_s, mode);
        const ImportReport report = ImportPoorly({u"proj"_s, u"--prune"_s});
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.Statuses().count(u"pruned"_s), 0);
        EXPECT_EQ(report.Statuses().count(u"orphaned"_s), 0);
        EXPECT_EQ(tree.Read(u"cloud/proj/closed/part.txt"_s), "part");
    }
}

TEST_F(Unreadable, APluginFolderThatCannotBeLookedAtIsNamedAndTheExitCodeSaysSo)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.txt\n").File(u"work/lib/part.txt"_s, "p");
    // It can be entered, and is there.
    for (const mode_t mode : {0000, 0111}) {
        Close(u"plugins"_s, mode);
        const ImportReport report = ImportPoorly({u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(report.exitCode, 7) << ::testing::PrintToString(report);
        EXPECT_TRUE(report.result.err.contains(u"plugins: The folder cannot be searched"_s))
            << ::testing::PrintToString(report);
        SetMode(u"plugins"_s, 0755);
    }
    EXPECT_EQ(Report({u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Demo/top.tlk"_s), "link 1 lib/part.txt\n");
}

TEST_F(Unreadable, APluginFolderInAFolderThatCannotBeEnteredIsNotCalledMissing)
{
    tree.Folder(u"closed/plugins"_s);
    Close(u"closed"_s);
    const ImportReport report =
        ImportPoorly({u"proj"_s, u"--plugin-path"_s, tree.Path(u"closed/plugins"_s)});
    EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_TRUE(report.result.err.contains(u"cannot be looked at"_s))
        << ::testing::PrintToString(report);
}

} // namespace Halvern::Test
