// SPDX-License-Identifier: Apache-2.0

// What a move must not delete or change: files that symbolic and hard links lead to.

#include "ScenarioFixture.h"

#include <QtCore/QFile>

#include <csignal>
#include <filesystem>

#include <sys/stat.h>

namespace Halvern::Test {

namespace {

class MoveOfLinks : public ScenarioFixture
{
protected:
    MoveOfLinks()
    {
        tree.File(u"work/proj/a.txt"_s, "a")
            .File(u"outside/b.txt"_s, "b")
            .File(u"outside/folder/c.txt"_s, "c");
    }
    void Link(const QString& at, const QString& to)
    {
        ASSERT_TRUE(QFile::link(tree.Path(to), tree.Path(at)));
    }
};

} // namespace

TEST_F(MoveOfLinks, AFileThatASymbolicLinkLeadsToStays)
{
    Link(u"work/proj/link.txt"_s, u"outside/b.txt"_s);
    const auto outside = Stamps(u"outside"_s);
    const ImportReport report = Report({u"proj"_s, u"--move"_s});
    EXPECT_EQ(Stamps(u"outside"_s), outside) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/proj/link.txt"_s), "b");
    EXPECT_EQ(Stamp(u"cloud/proj/link.txt"_s).kind, "file");
}

TEST_F(MoveOfLinks, AFolderThatASymbolicLinkLeadsToKeepsItsFiles)
{
    Link(u"work/proj/linked"_s, u"outside/folder"_s);
    const auto outside = Stamps(u"outside"_s);
    const ImportReport report = Report({u"proj"_s, u"--move"_s});
    EXPECT_EQ(Stamps(u"outside"_s), outside) << ::testing::PrintToString(report);
    EXPECT_FALSE(tree.Exists(u"cloud/proj/linked/c.txt"_s));
}

TEST_F(MoveOfLinks, AMovedFileWhoseFolderBecameASymbolicLinkIsMissing)
{
    tree.File(u"work/lib/part.txt"_s, "part").File(u"outside/lib/part.txt"_s, "precious");
    ASSERT_EQ(Report({u"lib"_s, u"--move"_s}).exitCode, 0);
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.txt\n").Remove(u"cloud/lib"_s);
    Link(u"cloud/lib"_s, u"outside/lib"_s);
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 4);
    EXPECT_EQ(report.StatusOf(u"work/lib/part.txt"_s), u"missing"_s);
    EXPECT_EQ(tree.Read(u"cloud/proj/top.tlk"_s), "link 1 ../lib/part.txt\n");
}

TEST_F(MoveOfLinks, TheOtherNameOfAHardLinkStaysAsItIs)
{
    std::filesystem::create_hard_link(tree.Path(u"outside/b.txt"_s).toStdString(),
                                      tree.Path(u"work/proj/b.txt"_s).toStdString());
    const auto outside = Stamps(u"outside"_s);
    EXPECT_EQ(Report({u"proj"_s, u"--move"_s}).exitCode, 0);
    EXPECT_EQ(Stamps(u"outside"_s), outside);
    EXPECT_EQ(tree.Read(u"cloud/proj/b.txt"_s), "b");
    EXPECT_FALSE(tree.Exists(u"work/proj/b.txt"_s));
}

TEST_F(MoveOfLinks, ALinkedFileKeepsItsPermissions)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../../outside/b.txt\n");
    ASSERT_EQ(::chmod(QFile::encodeName(tree.Path(u"outside/b.txt"_s)).constData(), 0444), 0);
    const auto outside = Stamps(u"outside"_s);
    EXPECT_EQ(Report({u"proj"_s, u"--move"_s}).exitCode, 0);
    EXPECT_EQ(Stamps(u"outside"_s), outside);
}

TEST_F(MoveOfLinks, AMovedFileThatAnotherSourceLinksToSymbolicallyLeavesItsContent)
{
    Link(u"work/proj/link.txt"_s, u"work/proj/a.txt"_s);
    const ImportReport report = Report({u"proj"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "a");
    EXPECT_EQ(tree.Read(u"cloud/proj/link.txt"_s), "a");
}

TEST_F(MoveOfLinks, CancelledByASignalLosesNothingAndTheSameCommandCompletesIt)
{
    FileTree::Snapshot sources;
    for (int file = 0; file < 200; ++file)
        sources.insert(u"f%1.bin"_s.arg(file), PatternBytes(50'000, quint32(file)));
    tree.Remove(u"work/proj"_s);
    for (auto it = sources.begin(); it != sources.end(); ++it)
        tree.File(u"work/proj/"_s + it.key(), it.value());
    const QStringList arguments = ImportArguments({u"proj"_s, u"--move"_s});
    QProcess process;
    Prepare(process, arguments);
    process.start();
    ASSERT_TRUE(process.waitForStarted());
    while (process.state() != QProcess::NotRunning && !tree.Exists(u"cloud/proj/f1.bin"_s))
        process.waitForFinished(1);
    ::kill(pid_t(process.processId()), SIGINT);
    const CommandResult cancelled = Finish(process);
    EXPECT_EQ(cancelled.exitCode, 20) << ::testing::PrintToString(cancelled);
    for (auto it = sources.begin(); it != sources.end(); ++it)
        EXPECT_TRUE(Stamp(u"work/proj/"_s + it.key()).content == it.value() ||
                    Stamp(u"cloud/proj/"_s + it.key()).content == it.value())
            << it.key().toStdString() << " is lost";
    EXPECT_EQ(Leftovers(), QStringList());
    if (tree.Exists(u"work/proj"_s)) {
        const CommandResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    }
    EXPECT_EQ(tree.Contents(u"cloud/proj"_s), sources);
    EXPECT_TRUE(tree.Contents(u"work/proj"_s).isEmpty());
}

TEST_F(MoveOfLinks, AnEmptyFolderStaysWhereItGetsNoCopy)
{
    tree.Folder(u"work/proj/empty"_s);
    tree.Folder(u"cloud/proj"_s);
    Link(u"cloud/proj/empty"_s, u"outside/folder"_s);
    EXPECT_EQ(Report({u"proj"_s, u"--move"_s}).exitCode, 1);
    EXPECT_TRUE(tree.Exists(u"work/proj/empty"_s));
    tree.Folder(u"work/other/empty"_s)
        .File(u"work/other/top.tlk"_s, "link 1 ../../outside/b.txt\n");
    EXPECT_EQ(Report({u"other"_s, u"--links-only"_s, u"--move"_s}).exitCode, 0);
    EXPECT_TRUE(tree.Exists(u"work/other/empty"_s));
}

TEST_F(MoveOfLinks, TwoNamesOfOneFileThatWereImportedBeforeGoBoth)
{
    std::filesystem::create_hard_link(tree.Path(u"work/proj/a.txt"_s).toStdString(),
                                      tree.Path(u"work/proj/b.txt"_s).toStdString());
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    const ImportReport report = Report({u"proj"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_FALSE(tree.Exists(u"work/proj"_s));
}

} // namespace Halvern::Test
