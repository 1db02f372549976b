// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"

#include <QtCore/QDir>
#include <QtTest/QSignalSpy>

namespace Halvern::Test {

namespace {

class CopyFile : public CopyingFixture
{};

} // namespace

TEST_F(CopyFile, AnEmptyPointerFailsWithoutAWord)
{
    EXPECT_FALSE(Copy(nullptr));
    EXPECT_TRUE(Lines().isEmpty());
}

TEST_F(CopyFile, AFileThatIsItsOwnTargetSucceedsAndNothingElseHappens)
{
    tree.File("cloud/a.prt", "content");
    const auto mapping = AddPaths(Cloud("a.prt"), Cloud("./a.prt"), FileMapping::NoFlag);
    QSignalSpy copied(importer.get(), &FileLinkImporterImp::FileCopied);
    EXPECT_TRUE(Copy(mapping));
    EXPECT_TRUE(copied.isEmpty());
    EXPECT_TRUE(Lines().isEmpty());
    EXPECT_EQ(mapping->GetFlag(), FileMapping::NoFlag);
    EXPECT_FALSE(mapping->GetCopyDate().isValid());
}

TEST_F(CopyFile, AnEmptySourceOrTargetFailsWithoutAWord)
{
    tree.File("src/a.prt");
    EXPECT_FALSE(Copy(AddPaths(QString(), Cloud("a.prt"))));
    EXPECT_FALSE(Copy(AddPaths(tree.Path("src/a.prt"), QString())));
    EXPECT_TRUE(Lines().isEmpty());
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{}));
}

TEST_F(CopyFile, AMissingSourceIsNamedWithItsTarget)
{
    EXPECT_FALSE(Copy(Add("src/a.prt", "deep/a.prt")));
    EXPECT_EQ(Lines(), QStringList{"ERROR Failed to copy file " + tree.Path("src/a.prt") + " to " +
                                   Cloud("deep/a.prt") + ". Source file is not found."});
    EXPECT_FALSE(tree.Exists("cloud/deep"));
}

TEST_F(CopyFile, ATargetThatIsAFolderFailsWithoutAWord)
{
    tree.File("src/a.prt").File("cloud/a.prt/inside");
    EXPECT_FALSE(Copy(Add("src/a.prt", "a.prt")));
    EXPECT_TRUE(Lines().isEmpty());
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt/inside", "cloud/a.prt/inside"}}));
}

TEST_F(CopyFile, AParentThatIsAFileIsNamedAsAFolderThatCannotBeMade)
{
    tree.File("src/a.prt").File("cloud/P", "file");
    QSignalSpy created(importer.get(), &FileLinkImporterImp::FolderCreated);
    EXPECT_FALSE(Copy(Add("src/a.prt", "P/a.prt")));
    EXPECT_EQ(Lines(), QStringList{"ERROR Failed to create folder " + Cloud("P")});
    EXPECT_TRUE(created.isEmpty());
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"P", "file"}}));
}

TEST_F(CopyFile, ACopyIsRecordedOnTheMappingAndAnnounced)
{
    tree.File("src/a.prt", "content");
    const auto mapping = Add("src/a.prt", "a.prt");
    QSignalSpy copied(importer.get(), &FileLinkImporterImp::FileCopied);
    QSignalSpy moved(importer.get(), &FileLinkImporterImp::FileMoved);
    const QDateTime before = QDateTime::currentDateTime();
    EXPECT_TRUE(Copy(mapping));
    EXPECT_EQ(Lines(), QStringList{"DEBUG File copied successfully from " + tree.Path("src/a.prt") +
                                   " to " + Cloud("a.prt")});
    EXPECT_TRUE(mapping->HasFlag(FileMapping::Copied));
    EXPECT_GE(mapping->GetCopyDate(), before);
    EXPECT_LE(mapping->GetCopyDate(), QDateTime::currentDateTime());
    EXPECT_EQ(mapping->GetCopyDate().timeSpec(), Qt::LocalTime);
    EXPECT_EQ(mapping->GetSourceFileLastModified(), tree.Modified("src/a.prt"));
    EXPECT_EQ(mapping->GetTargetFileLastModified(), tree.Modified("cloud/a.prt"));
    EXPECT_EQ(mapping->GetTargetFileSize(), 7);
    ASSERT_EQ(copied.size(), 1);
    EXPECT_EQ(copied[0], (QVariantList{tree.Path("src/a.prt"), Cloud("a.prt")}));
    EXPECT_TRUE(moved.isEmpty());
}

TEST_F(CopyFile, TheSignalComesWhenEverythingIsRecorded)
{
    tree.File("src/a.prt").File("cloud/a.prt", "old");
    const auto mapping = Add("src/a.prt", "a.prt");
    bool recorded = false;
    QObject::connect(importer.get(), &FileLinkImporterImp::FileCopied, importer.get(), [&] {
        recorded = mapping->HasFlag(FileMapping::Copied) && mapping->GetCopyDate().isValid() &&
                   !tree.Exists("cloud/a.prt.tmp") && tree.Read("cloud/a.prt") == "src/a.prt";
    });
    EXPECT_TRUE(Copy(mapping));
    EXPECT_TRUE(recorded);
}

TEST_F(CopyFile, TheFolderIsAnnouncedBeforeTheFileByItsAbsolutePath)
{
    tree.File("src/a.prt");
    QStringList signalled;
    QObject::connect(importer.get(), &FileLinkImporterImp::FolderCreated, importer.get(),
                     [&](const QString& path) {
                         EXPECT_TRUE(QDir(path).isEmpty());
                         signalled.append(path);
                     });
    QObject::connect(importer.get(), &FileLinkImporterImp::FileCopied, importer.get(),
                     [&](const QString&, const QString& target) { signalled.append(target); });
    EXPECT_TRUE(Copy(Add("src/a.prt", "x/y/a.prt")));
    EXPECT_EQ(signalled, (QStringList{Cloud("x/y"), Cloud("x/y/a.prt")}));
}

TEST_F(CopyFile, AReadOnlySourceGivesAReadOnlyCopyAndStaysReadOnly)
{
    tree.File("src/a.prt");
    QFile::setPermissions(tree.Path("src/a.prt"), QFile::ReadOwner);
    EXPECT_TRUE(Copy(Add("src/a.prt", "a.prt")));
    EXPECT_FALSE(QFile::permissions(tree.Path("src/a.prt")) & QFile::WriteOwner);
    EXPECT_FALSE(QFile::permissions(Cloud("a.prt")) & QFile::WriteOwner);
}

TEST_F(CopyFile, NamesOfAnyAlphabetAndWithBlanksAreCopied)
{
    tree.File("src/Träger 螺栓 (1).prt", "content");
    EXPECT_TRUE(Copy(Add("src/Träger 螺栓 (1).prt", "Ü/Träger 螺栓 (1).prt")));
    EXPECT_EQ(tree.Read("cloud/Ü/Träger 螺栓 (1).prt"), "content");
}

namespace {

class CreateFolder : public CopyingFixture
{};

} // namespace

TEST_F(CreateFolder, AnEmptyPathFails)
{
    QSignalSpy created(importer.get(), &FileLinkImporterImp::FolderCreated);
    EXPECT_FALSE(importer->CreateFolder(QString(), false));
    EXPECT_TRUE(created.isEmpty());
}

TEST_F(CreateFolder, AnExistingFolderSucceedsWithoutASignal)
{
    tree.Folder("cloud/F");
    QSignalSpy created(importer.get(), &FileLinkImporterImp::FolderCreated);
    EXPECT_TRUE(importer->CreateFolder(Cloud("F"), true));
    EXPECT_TRUE(created.isEmpty());
    EXPECT_TRUE(Lines().isEmpty());
}

TEST_F(CreateFolder, ANewFolderIsMadeWithItsParentsAndAnnouncedOnce)
{
    QSignalSpy created(importer.get(), &FileLinkImporterImp::FolderCreated);
    EXPECT_TRUE(importer->CreateFolder(Cloud("x/y/z"), false));
    EXPECT_TRUE(tree.Exists("cloud/x/y/z"));
    ASSERT_EQ(created.size(), 1);
    EXPECT_EQ(created[0][0].toString(), Cloud("x/y/z"));
}

TEST_F(CreateFolder, AFailureIsLoggedAndAnnouncedAllTheSame)
{
    tree.File("cloud/x", "file");
    QSignalSpy created(importer.get(), &FileLinkImporterImp::FolderCreated);
    EXPECT_FALSE(importer->CreateFolder(Cloud("x/y"), false));
    EXPECT_EQ(Lines(), QStringList{"ERROR Failed to create folder " + Cloud("x/y")});
    EXPECT_EQ(created.size(), 1);
}

TEST_F(CreateFolder, ASlotThatMakesTheFolderAfterAFailureMakesItASuccess)
{
    tree.File("cloud/x", "file");
    QObject::connect(importer.get(), &FileLinkImporterImp::FolderCreated, importer.get(),
                     [&](const QString& path) {
                         tree.Remove("cloud/x");
                         QDir().mkpath(path);
                     });
    EXPECT_TRUE(importer->CreateFolder(Cloud("x/y"), false));
    EXPECT_TRUE(log.Has("ERROR Failed to create folder " + Cloud("x/y")));
}

} // namespace Halvern::Test
