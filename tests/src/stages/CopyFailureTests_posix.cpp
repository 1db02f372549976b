// SPDX-License-Identifier: Apache-2.0

// Failures that the operating system itself reports in the middle of a copy.

#include "CopyingFixture.h"
#include "OrdinaryRights.h"
#include "SmallDisk.h"

#include <QtCore/QDir>
#include <QtTest/QSignalSpy>

#include <thread>

#include <sys/stat.h>

namespace Halvern::Test {

namespace {

class CopyFailure : public CopyingFixture
{
protected:
    void SetMode(const QString& relative, mode_t mode)
    {
        ASSERT_EQ(::chmod(QFile::encodeName(tree.Path(relative)).constData(), mode), 0);
    }
    QString CopyError(const QString& source, const QString& target) const
    {
        return "ERROR Failed to copy file " + tree.Path(source) + " to " + Cloud(target) +
               ". Error: ";
    }
};

} // namespace

TEST_F(CopyFailure, AFullDiskLeavesNoPartOfTheCopyAndKeepsTheOldFileParked)
{
    tree.File("src/a.prt", PatternBytes(2'000'000)).Folder("cloud/disk");
    const SmallDisk disk(Cloud("disk"), 256 * 1024);
    tree.File("cloud/disk/a.prt", "old");
    const auto mapping = Add("src/a.prt", "disk/a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("cloud/disk"), (FileTree::Snapshot{{"a.prt.tmp", "old"}}));
    EXPECT_EQ(LinesWith(CopyError("src/a.prt", "disk/a.prt")).size(), 1);
    EXPECT_FALSE(mapping->HasFlag(FileMapping::Copied));
}

TEST_F(CopyFailure, WhatFitsOnAFullDiskIsStillCopied)
{
    tree.File("src/big.prt", PatternBytes(2'000'000)).File("src/small.prt").Folder("cloud/disk");
    const SmallDisk disk(Cloud("disk"), 256 * 1024);
    Add("src/big.prt", "disk/big.prt");
    Add("src/small.prt", "disk/small.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("cloud/disk"), (FileTree::Snapshot{{"small.prt", "src/small.prt"}}));
    EXPECT_TRUE(log.Has("INFO Finished copying files. Copied: 1, Folders created: 0, Failed: 1, "
                        "Skipped: 0, Total: 2"));
}

TEST_F(CopyFailure, AMoveToAFullDiskKeepsTheSource)
{
    const QByteArray content = PatternBytes(2'000'000);
    tree.File("src/a.prt", content).Folder("cloud/disk");
    const SmallDisk disk(Cloud("disk"), 256 * 1024);
    EXPECT_FALSE(Copy(Add("src/a.prt", "disk/a.prt"), true));
    EXPECT_EQ(tree.Read("src/a.prt"), content);
}

TEST_F(CopyFailure, ASourceThatCannotBeReadLeavesTheOldFileParked)
{
    tree.File("src/a.prt").File("cloud/a.prt", "old");
    const auto mapping = Add("src/a.prt", "a.prt");
    SetMode("src/a.prt", 0);
    {
        const OrdinaryRights rights;
        EXPECT_FALSE(Copy(mapping));
    }
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt.tmp", "old"}}));
    ASSERT_EQ(LinesWith(CopyError("src/a.prt", "a.prt")).size(), 1);
    EXPECT_TRUE(Lines().last().contains("Permission denied")) << Lines().last().toStdString();
}

TEST_F(CopyFailure, AFolderThatCannotBeWrittenFailsInBothStepsAndLosesNothing)
{
    tree.File("src/a.prt").File("cloud/P/a.prt", "old");
    const auto mapping = Add("src/a.prt", "P/a.prt");
    SetMode("cloud/P", 0555);
    {
        const OrdinaryRights rights;
        EXPECT_FALSE(Copy(mapping));
    }
    const QString rename = "ERROR Failed to rename existing file " + Cloud("P/a.prt") +
                           " to temp file " + Cloud("P/a.prt.tmp") + ". Error: ";
    const QStringList lines = Lines();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].startsWith(rename)) << lines[0].toStdString();
    EXPECT_GT(lines[0].size(), rename.size());
    EXPECT_EQ(lines[1], CopyError("src/a.prt", "P/a.prt") + "Destination file exists");
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"P/a.prt", "old"}}));
}

TEST_F(CopyFailure, AParentFolderThatCannotBeMadeIsLogged)
{
    tree.File("src/a.prt").Folder("cloud/P");
    const auto mapping = Add("src/a.prt", "P/sub/a.prt");
    SetMode("cloud/P", 0555);
    const OrdinaryRights rights;
    EXPECT_FALSE(Copy(mapping));
    EXPECT_EQ(Lines(), QStringList{"ERROR Failed to create folder " + Cloud("P/sub")});
}

TEST_F(CopyFailure, AMovedSourceThatCannotBeDeletedLeavesCopyAndParkedFileInPlace)
{
    tree.File("src/a.prt", "new").File("cloud/a.prt", "old");
    const auto mapping = Add("src/a.prt", "a.prt");
    QSignalSpy moved(importer.get(), &FileLinkImporterImp::FileMoved);
    SetMode("src", 0555);
    {
        const OrdinaryRights rights;
        EXPECT_FALSE(Copy(mapping, true));
    }
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt", "new"}, {"a.prt.tmp", "old"}}));
    EXPECT_EQ(tree.Contents("src"), (FileTree::Snapshot{{"a.prt", "new"}}));
    EXPECT_FALSE(mapping->HasFlag(FileMapping::Copied));
    EXPECT_FALSE(mapping->GetCopyDate().isValid());
    EXPECT_TRUE(moved.isEmpty());
    const QStringList lines = Lines();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0], "ERROR Failed to delete source file " + tree.Path("src/a.prt") +
                            " after copying it to target for move operation. Error: "
                            "Permission denied");
}

TEST_F(CopyFailure, AReadOnlySourceThatCannotBeDeletedHasLostItsProtection)
{
    tree.File("src/a.prt");
    const auto mapping = Add("src/a.prt", "a.prt");
    SetMode("src/a.prt", 0444);
    SetMode("src", 0555);
    const OrdinaryRights rights;
    EXPECT_FALSE(Copy(mapping, true));
    EXPECT_TRUE(QFile::permissions(tree.Path("src/a.prt")) & QFile::WriteOwner);
}

TEST_F(CopyFailure, AParkedFileThatCannotBeDeletedDoesNotMakeTheCopyFail)
{
    // Large enough for another thread to act between the parking and the end of the copy.
    tree.File("src/a.prt", "").File("cloud/a.prt", "old");
    ASSERT_TRUE(QFile::resize(tree.Path("src/a.prt"), 64 << 20));
    const QString parked = Cloud("a.prt.tmp");
    std::thread meddler([&] {
        while (!QFile::exists(parked))
            std::this_thread::yield();
        QFile::rename(parked, Cloud("taken away"));
        QDir().mkdir(parked);
    });
    QSignalSpy copied(importer.get(), &FileLinkImporterImp::FileCopied);
    const auto mapping = Add("src/a.prt", "a.prt");
    EXPECT_TRUE(Copy(mapping));
    meddler.join();
    ASSERT_EQ(LinesWith("ERROR").size(), 1) << Lines().join('\n').toStdString();
    EXPECT_TRUE(LinesWith("ERROR").first().startsWith("ERROR Failed to delete temp file " + parked +
                                                      ". Error: "));
    EXPECT_TRUE(mapping->HasFlag(FileMapping::Copied));
    EXPECT_EQ(copied.size(), 1);
    EXPECT_EQ(QFileInfo(Cloud("a.prt")).size(), 64 << 20);
    EXPECT_EQ(tree.Read("cloud/taken away"), "old");
}

TEST_F(CopyFailure, ADanglingLinkInThePlaceOfTheTargetIsNotReplaced)
{
    tree.File("src/a.prt");
    QFile::link(tree.Path("nowhere"), Cloud("a.prt"));
    EXPECT_FALSE(Copy(Add("src/a.prt", "a.prt")));
    EXPECT_EQ(Lines(), QStringList{CopyError("src/a.prt", "a.prt") + "Destination file exists"});
    EXPECT_TRUE(QFileInfo(Cloud("a.prt")).isSymLink());
    EXPECT_FALSE(tree.Exists("nowhere"));
}

TEST_F(CopyFailure, AMoveOntoAnotherNameOfTheSameFileIsNoMove)
{
    Restart(Global::MoveFiles);
    tree.File("cloud/a.prt", "content").Folder("src");
    QFile::link(Cloud("a.prt"), tree.Path("src/alias.prt"));
    const auto mapping = Add("src/alias.prt", "a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt", "content"}}));
    EXPECT_TRUE(QFileInfo(tree.Path("src/alias.prt")).isSymLink());
}

} // namespace Halvern::Test
