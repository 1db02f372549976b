// SPDX-License-Identifier: Apache-2.0

// A moved source is deleted last, and only when its copy and everything that it links are in order.

#include "MoveFixture.h"
#include "ProcessStart.h"

#include <QtCore/QElapsedTimer>

#include <random>

namespace Halvern::Test {

using Move = MoveFixture;

TEST_F(Move, DeletesEverySourceWhenAllIsInOrder)
{
    const FileTree::Snapshot before = tree.Contents(u"work/proj"_s);
    const ImportReport report = MoveProject();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Contents(u"cloud/proj"_s), before);
    EXPECT_TRUE(!tree.Exists(u"work/proj"_s) || Left() == QStringList{})
        << Left().join(u' ').toStdString();
}

TEST_F(Move, TakesReadOnlySourcesAlong)
{
    const QString name = u"leaf.txt"_s;
    ASSERT_TRUE(QFile::setPermissions(tree.Path(u"work/proj/"_s + name), QFile::ReadOwner));
    const ImportReport report = MoveProject();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_FALSE(tree.Exists(u"work/proj"_s));
    const QString copy = tree.Path(u"cloud/proj/"_s + name);
    EXPECT_EQ(tree.Read(u"cloud/proj/"_s + name), "leaf");
    EXPECT_FALSE(QFile::permissions(copy).testFlag(QFile::WriteOwner));
    // Otherwise Windows does not let the tree be removed.
    QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(Move, KeepsEverySourceThatLeadsToAMissingFile)
{
    tree.File(u"work/proj/sub.tlk"_s, "link 1 leaf.txt\nlink 2 gone.txt\n");
    const ImportReport report = MoveProject();
    EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_TRUE(Left().contains(u"sub.tlk"_s));
    EXPECT_TRUE(Left().contains(u"top.tlk"_s));
    EXPECT_FALSE(Left().contains(u"free.txt"_s));
    EXPECT_TRUE(tree.Exists(u"cloud/proj/top.tlk"_s));
    // Once the file is there, the same command completes it.
    tree.File(u"work/proj/gone.txt"_s, "here");
    EXPECT_EQ(MoveProject().exitCode, 0);
    EXPECT_TRUE(!tree.Exists(u"work/proj"_s) || Left() == QStringList{});
    EXPECT_EQ(tree.Read(u"cloud/proj/gone.txt"_s), "here");
}

TEST_F(Move, KeepsEverySourceThatLeadsToAKeptFile)
{
    tree.File(u"cloud/proj/leaf.txt"_s, "foreign");
    MoveProject({u"--collisions"_s, u"keep"_s});
    EXPECT_EQ(Left(), (QStringList{u"leaf.txt"_s, u"sub.tlk"_s, u"top.tlk"_s}));
    EXPECT_EQ(tree.Read(u"cloud/proj/leaf.txt"_s), "foreign");
}

TEST_F(Move, KeepsEverySourceThatLeadsToAFailedFile)
{
    tree.Folder(u"cloud/proj/leaf.txt"_s).File(u"cloud/proj/leaf.txt/x"_s, "x");
    const ImportReport report = MoveProject();
    EXPECT_NE(report.exitCode, 0);
    const QStringList left = Left();
    for (const QString& name : {u"leaf.txt"_s, u"sub.tlk"_s, u"top.tlk"_s})
        EXPECT_TRUE(left.contains(name)) << name.toStdString();
}

TEST_F(Move, KeepsEverySourceWhoseLinksAreStillToBeRewritten)
{
    tree.File(u"work/proj/sub.tlk"_s, "link 1 ../lib/part.txt\n").File(u"work/lib/part.txt"_s, "p");
    {
        const PluginOrders orders("norepath");
        const ImportReport report = Report({u"proj/top.tlk"_s, u"proj/sub.tlk"_s, u"--move"_s});
        EXPECT_EQ(report.exitCode, 7) << ::testing::PrintToString(report);
        EXPECT_TRUE(Left().contains(u"sub.tlk"_s));
        EXPECT_TRUE(Left().contains(u"top.tlk"_s));
    }
    const ImportReport report = Report({u"proj/top.tlk"_s, u"proj/sub.tlk"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Left(), (QStringList{u"free.txt"_s, u"leaf.txt"_s}));
    EXPECT_EQ(tree.Read(u"cloud/sub.tlk"_s), "link 1 lib/part.txt\n");
    EXPECT_EQ(tree.Read(u"work/lib/part.txt"_s), "p");
}

TEST_F(Move, KeepsASourceWhoseLinksCouldNotBeRead)
{
    {
        const PluginOrders orders("fail");
        EXPECT_EQ(MoveProject().exitCode, 7);
        EXPECT_TRUE(Left().contains(u"sub.tlk"_s));
        EXPECT_TRUE(Left().contains(u"top.tlk"_s));
    }
    EXPECT_EQ(MoveProject().exitCode, 0);
    EXPECT_TRUE(!tree.Exists(u"work/proj"_s) || Left() == QStringList{});
}

TEST_F(Move, FilesThatLinkEachOtherInACircleAreMoved)
{
    tree.File(u"work/proj/leaf.tlk"_s, "link 1 top.tlk\n")
        .File(u"work/proj/sub.tlk"_s, "link 1 leaf.tlk\nlink 2 sub.tlk\n");
    const ImportReport report = MoveProject();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_TRUE(!tree.Exists(u"work/proj"_s) || Left() == QStringList{});
}

TEST_F(Move, OfACircleWithAMissingFileNoneIsDeleted)
{
    tree.File(u"work/proj/leaf.tlk"_s, "link 1 top.tlk\nlink 2 gone.txt\n")
        .File(u"work/proj/sub.tlk"_s, "link 1 leaf.tlk\n");
    EXPECT_NE(MoveProject().exitCode, 0);
    EXPECT_EQ(Left(), (QStringList{u"leaf.tlk"_s, u"sub.tlk"_s, u"top.tlk"_s}));
}

TEST_F(Move, WhatAMovedFileLinksOutsideTheSelectionIsOnlyCopied)
{
    tree.File(u"work/proj/sub.tlk"_s, "link 1 ../lib/part.txt\n").File(u"work/lib/part.txt"_s, "p");
    const auto before = Stamps(u"work/lib"_s);
    EXPECT_EQ(MoveProject().exitCode, 0);
    EXPECT_EQ(Stamps(u"work/lib"_s), before);
    EXPECT_EQ(tree.Read(u"cloud/proj/sub.tlk"_s), "link 1 lib/part.txt\n");
}

TEST_F(Move, ASourceThatAnotherFileStillLinksIsMovedOnlyWithTheSelection)
{
    // work/user.tlk is not part of the move, and stays as it is.
    tree.File(u"work/user.tlk"_s, "link 1 proj/leaf.txt\n");
    const FileStamp before = Stamp(u"work/user.tlk"_s);
    EXPECT_EQ(MoveProject().exitCode, 0);
    EXPECT_EQ(Stamp(u"work/user.tlk"_s), before);
}

TEST_F(Move, ASecondRunOfWhatStayedChangesNoCopyThatIsInOrder)
{
    tree.File(u"work/proj/sub.tlk"_s, "link 1 ../lib/part.txt\nlink 2 gone.txt\n")
        .File(u"work/lib/part.txt"_s, "part");
    EXPECT_EQ(Report({u"lib/part.txt"_s, u"--move"_s}).exitCode, 0);
    EXPECT_NE(Report({u"proj/sub.tlk"_s, u"--move"_s}).exitCode, 0);
    EXPECT_FALSE(tree.Exists(u"work/lib/part.txt"_s));
    const auto before = Stamps(u"cloud"_s);
    EXPECT_EQ(tree.Read(u"cloud/sub.tlk"_s), "link 1 part.txt\nlink 2 gone.txt\n");
    EXPECT_NE(Report({u"proj/sub.tlk"_s, u"--move"_s}).exitCode, 0);
    EXPECT_NE(Report({u"proj/sub.tlk"_s}).exitCode, 0);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(Move, WhatWasCopiedBeforeIsDeletedByAMoveOfTheSame)
{
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    const ImportReport report = MoveProject();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_TRUE(!tree.Exists(u"work/proj"_s) || Left() == QStringList{})
        << Left().join(u' ').toStdString();
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(Move, ACopyThatItsOwnerEditedKeepsTheSource)
{
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    Save(u"cloud/proj/leaf.txt"_s, "mine");
    MoveProject();
    EXPECT_TRUE(Left().contains(u"leaf.txt"_s));
    EXPECT_EQ(tree.Read(u"cloud/proj/leaf.txt"_s), "mine");
}

TEST_F(Move, AnotherCopyOfAMovedFileIsNoOrphan)
{
    ASSERT_EQ(Report({u"proj/leaf.txt"_s}).exitCode, 0);
    ASSERT_EQ(MoveProject().exitCode, 0);
    tree.Folder(u"work/proj"_s);
    const auto before = Stamps(u"cloud"_s);
    const ImportReport report = Report({u"proj"_s, u"--prune"_s});
    EXPECT_EQ(report.exitCode, 0);
    EXPECT_EQ(report.Lines(), QStringList());
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(Move, ADryRunDeletesNothing)
{
    const auto before = Stamps(u"work"_s);
    EXPECT_EQ(MoveProject({u"--dry-run"_s}).exitCode, 0);
    EXPECT_EQ(Stamps(u"work"_s), before);
    EXPECT_FALSE(tree.Exists(u"cloud/proj"_s));
}

TEST_F(Move, KilledAtAnyMomentLosesNothingAndTheSameCommandCompletesIt)
{
    FileTree::Snapshot sources;
    sources.insert(u"top.tlk"_s, QByteArray());
    for (int part = 0; part < 20; ++part) {
        const QString name = u"p%1.bin"_s.arg(part);
        sources[u"top.tlk"_s] += "link " + QByteArray::number(part) + ' ' + name.toUtf8() + '\n';
        sources.insert(name, PatternBytes(100'000, quint32(part)));
    }
    std::mt19937 random(1);
    int duration = 0;
    for (int round = 0; round < 10 && !HasFailure(); ++round) {
        tree.Remove(u"work/proj"_s).Folder(u"cloud"_s).Remove(u"cloud"_s);
        for (auto it = sources.begin(); it != sources.end(); ++it)
            tree.File(u"work/proj/"_s + it.key(), it.value());
        const QStringList arguments =
            ImportArguments({u"proj"_s, u"--move"_s, u"--to"_s, u"R%1"_s.arg(round)});
        QProcess process;
        Prepare(process, arguments);
        QElapsedTimer timer;
        timer.start();
        StartProcess(process);
        const int moment = round == 0 ? 60'000 : int(random() % quint32(duration + 10));
        if (!process.waitForFinished(moment)) {
            process.kill();
            process.waitForFinished();
        }
        if (round == 0)
            duration = int(timer.elapsed());
        SCOPED_TRACE("killed after " + std::to_string(moment) + " of " + std::to_string(duration) +
                     " ms");
        const QString copies = u"cloud/R%1/proj/"_s.arg(round);
        for (auto it = sources.begin(); it != sources.end(); ++it)
            EXPECT_TRUE(Stamp(u"work/proj/"_s + it.key()).content == it.value() ||
                        Stamp(copies + it.key()).content == it.value())
                << it.key().toStdString() << " is lost";
        if (tree.Exists(u"work/proj"_s) && !Left().isEmpty()) {
            const CommandResult result = Run(arguments);
            EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        }
        // Whatever is imported next clears away what a killed import began.
        tree.File(u"work/next.txt"_s);
        EXPECT_EQ(Import({u"next.txt"_s}).exitCode, 0);
        EXPECT_EQ(tree.Contents(copies), sources);
        EXPECT_TRUE(!tree.Exists(u"work/proj"_s) || Left().isEmpty());
        EXPECT_EQ(Leftovers(), QStringList());
        tree.Folder(u"work/proj"_s);
    }
}

} // namespace Halvern::Test
