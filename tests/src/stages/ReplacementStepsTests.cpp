// SPDX-License-Identifier: Apache-2.0

// What stands where while one file takes the place of another, seen from inside the operation.

#include "AtRecord.h"
#include "CopyingFixture.h"
#include "RecordLines.h"

#include <QtCore/QDir>
#include <QtTest/QSignalSpy>

#include <filesystem>
#include <system_error>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

const QString success = u"File copied successfully from "_s;
const RecordsOf copyFile(u"FileLinkImporterImp::CopyFile"_s);

/// The selection "src/a.prt" goes to "cloud/a.prt", where another file stands.
class ReplacementSteps : public CopyingFixture
{
protected:
    ReplacementSteps()
    {
        tree.File("src/a.prt", "new").File("cloud/a.prt", "old");
        mapping = Add("src/a.prt", "a.prt");
    }

    QString Success() const
    {
        return copyFile.Debug("File copied successfully from src/a.prt to cloud/a.prt");
    }
    QStringList Records() const { return RecordLines(log, tree.Path()); }

    FileMappingPointer mapping;
    const QString parked = Cloud("a.prt.tmp");
};

} // namespace

TEST_F(ReplacementSteps, TheOldFileWaitsUnderItsTemporaryNameUntilTheCopyIsComplete)
{
    QSignalSpy copied(importer.get(), &FileLinkImporterImp::FileCopied);
    const AtRecord done(success, [&] {
        EXPECT_EQ(tree.Contents("cloud"),
                  (FileTree::Snapshot{{"a.prt", "new"}, {"a.prt.tmp", "old"}}));
        // The date is there; everything else is recorded when the old file is gone.
        EXPECT_TRUE(mapping->GetCopyDate().isValid());
        EXPECT_FALSE(mapping->HasFlag(FileMapping::Copied));
        EXPECT_FALSE(mapping->GetSourceFileLastModified().isValid());
        EXPECT_FALSE(mapping->GetTargetFileLastModified().isValid());
        EXPECT_TRUE(copied.isEmpty());
    });
    EXPECT_TRUE(Copy(mapping));
    EXPECT_EQ(done.Count(), 1);
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt", "new"}}));
    EXPECT_EQ(Records(), QStringList{Success()});
}

TEST_F(ReplacementSteps, WithTheFirstTemporaryNameTakenTheOldFileWaitsUnderTheSecondAndGoes)
{
    tree.File("cloud/a.prt.tmp", "stranger");
    const AtRecord done(success, [&] { EXPECT_EQ(tree.Read("cloud/a.prt_2.tmp"), "old"); });
    EXPECT_TRUE(Copy(mapping));
    EXPECT_EQ(done.Count(), 1);
    EXPECT_EQ(tree.Contents("cloud"),
              (FileTree::Snapshot{{"a.prt", "new"}, {"a.prt.tmp", "stranger"}}));
}

TEST_F(ReplacementSteps, TheSourceOfAMoveIsGoneBeforeTheOldFileIs)
{
    const AtRecord done(success, [&] {
        EXPECT_FALSE(tree.Exists("src/a.prt"));
        EXPECT_EQ(tree.Read("cloud/a.prt.tmp"), "old");
    });
    EXPECT_TRUE(Copy(mapping, true));
    EXPECT_EQ(done.Count(), 1);
}

TEST_F(ReplacementSteps, AParkedFileThatIsReadOnlyBecomesWritableAndGoes)
{
    const std::filesystem::path second =
        std::filesystem::path(tree.Path("src/second name").toStdU16String());
    std::error_code linked;
    const AtRecord done(success, [&] {
        std::filesystem::create_hard_link(std::filesystem::path(parked.toStdU16String()), second,
                                          linked);
        ASSERT_TRUE(QFile::setPermissions(parked, QFile::ReadOwner | QFile::ReadUser));
        ASSERT_FALSE(QFile::permissions(parked) & QFile::WriteOwner);
    });
    EXPECT_TRUE(Copy(mapping));
    EXPECT_EQ(done.Count(), 1);
    EXPECT_FALSE(tree.Exists("cloud/a.prt.tmp"));
    EXPECT_EQ(Records(), QStringList{Success()});
    // Another name of the same file shows what was done to it before it went.
    if (!linked) {
        EXPECT_TRUE(QFile::permissions(tree.Path("src/second name")) & QFile::WriteOwner);
        EXPECT_EQ(tree.Read("src/second name"), "old");
    }
}

TEST_F(ReplacementSteps, AParkedFileThatCannotBeDeletedIsNamedAndTheCopyCounts)
{
    const AtRecord done(success,
                        [&] { tree.Remove("cloud/a.prt.tmp").File("cloud/a.prt.tmp/stranger"); });
    QSignalSpy copied(importer.get(), &FileLinkImporterImp::FileCopied);
    EXPECT_TRUE(Copy(mapping));
    ASSERT_EQ(Records().size(), 2);
    EXPECT_EQ(Records()[0], Success());
    const QString failure = copyFile.Error("Failed to delete temp file cloud/a.prt.tmp. Error: ");
    EXPECT_TRUE(Records()[1].startsWith(failure)) << Records()[1].toStdString();
    EXPECT_GT(Records()[1].size(), failure.size());
    EXPECT_TRUE(mapping->HasFlag(FileMapping::Copied));
    EXPECT_EQ(copied.size(), 1);
    importer.reset();
    EXPECT_EQ(Database().GetFileCopyHistoryByAuthenticationId(7).size(), 1);
}

TEST_F(ReplacementSteps, ABaseFileThatCannotBeSavedDoesNotKeepTheCopyBack)
{
    tree.File("sync.db.base", "where the store's folder would be");
    EXPECT_TRUE(Copy(mapping));
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt", "new"}}));
    EXPECT_EQ(tree.Read("sync.db.base"), "where the store's folder would be");
}

TEST_F(ReplacementSteps, AReadOnlySourceIsMovedOntoTheOldFileAndItsCopyStaysReadOnly)
{
    QFile::setPermissions(tree.Path("src/a.prt"), QFile::ReadOwner | QFile::ReadUser);
    QSignalSpy moved(importer.get(), &FileLinkImporterImp::FileMoved);
    EXPECT_TRUE(Copy(mapping, true));
    EXPECT_FALSE(tree.Exists("src/a.prt"));
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt", "new"}}));
    EXPECT_FALSE(QFile::permissions(Cloud("a.prt")) & QFile::WriteOwner);
    EXPECT_EQ(moved.size(), 1);
    EXPECT_EQ(Records(), QStringList{Success()});
    // The copy is a read-only target from now on.
    tree.File("src/a.prt", "newer");
    log.Clear();
    EXPECT_FALSE(Copy(mapping));
    EXPECT_EQ(Records(), QStringList{copyFile.Info("Copy skipped for file src/a.prt. Target file "
                                                   "cloud/a.prt exists and is read-only.")});
    QFile::setPermissions(Cloud("a.prt"), QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(ReplacementSteps, ACopyThatFailsAfterParkingLeavesTheNameOfTheTargetEmpty)
{
    // A folder exists and can be looked at, but it has no bytes to copy.
    tree.Folder("src/folder")
        .File("cloud/a.prt.tmp", "stranger")
        .File("cloud/a.prt_2.tmp", "other");
    EXPECT_FALSE(Copy(Add("src/folder", "a.prt"), true));
    EXPECT_EQ(tree.Contents("cloud"),
              (FileTree::Snapshot{
                  {"a.prt.tmp", "stranger"}, {"a.prt_2.tmp", "other"}, {"a.prt_3.tmp", "old"}}));
    EXPECT_TRUE(tree.Exists("src/folder"));
    ASSERT_EQ(Records().size(), 1);
    EXPECT_TRUE(Records()[0].startsWith(
        copyFile.Error("Failed to copy file src/folder to cloud/a.prt. Error: ")));
}

TEST_F(ReplacementSteps, AParentFolderThatAppearsAfterTheFailureToMakeItIsAnnouncedAndUsed)
{
    tree.File("cloud/P", "file");
    const AtRecord failed("Failed to create folder ",
                          [&] { tree.Remove("cloud/P").Folder("cloud/P"); });
    QSignalSpy created(importer.get(), &FileLinkImporterImp::FolderCreated);
    EXPECT_TRUE(Copy(Add("src/a.prt", "P/a.prt")));
    EXPECT_EQ(Records(), (QStringList{copyFile.Error("Failed to create folder cloud/P"),
                                      copyFile.Debug("File copied successfully from src/a.prt to "
                                                     "cloud/P/a.prt")}));
    ASSERT_EQ(created.size(), 1);
    EXPECT_EQ(created[0][0].toString(), Cloud("P"));
}

TEST_F(ReplacementSteps, ASelectedFolderThatAppearsAfterTheFailureToMakeItIsAnnouncedAndCounts)
{
    tree.File("cloud/P", "file").Folder("src/F");
    const AtRecord failed("Failed to create folder ",
                          [&] { tree.Remove("cloud/P").Folder("cloud/P/F"); });
    QSignalSpy created(importer.get(), &FileLinkImporterImp::FolderCreated);
    EXPECT_TRUE(importer->CreateFolder(Cloud("P/F"), false));
    EXPECT_EQ(failed.Count(), 1);
    ASSERT_EQ(created.size(), 1);
    EXPECT_EQ(created[0][0].toString(), Cloud("P/F"));
}

TEST_F(ReplacementSteps, NothingIsParkedForAMissingSourceOrAFolderInTheWay)
{
    tree.Folder("cloud/folder");
    EXPECT_FALSE(Copy(Add("src/missing.prt", "a.prt"), true));
    EXPECT_FALSE(Copy(Add("src/a.prt", "folder"), true));
    EXPECT_EQ(Records(), QStringList{copyFile.Error("Failed to copy file src/missing.prt to "
                                                    "cloud/a.prt. Source file is not found.")});
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt", "old"}, {"folder/", {}}}));
    EXPECT_EQ(tree.Read("src/a.prt"), "new");
    EXPECT_FALSE(tree.Exists("sync.db.base"));
}

} // namespace Halvern::Test
