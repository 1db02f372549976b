// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"

#include <QtTest/QSignalSpy>

namespace Halvern::Test {

namespace {

class MoveFiles : public CopyingFixture
{
protected:
    MoveFiles() { Restart(Global::MoveFiles); }

    FileMappingPointer AddFolder(const QString& source, const QString& target,
                                 FileMappingFlag more = FileMapping::NoFlag)
    {
        return Add(source, target, FileMapping::Selected | FileMapping::Folder | more);
    }
};

} // namespace

TEST_F(MoveFiles, ASelectedFileIsMovedAndALinkedOneCopied)
{
    tree.File("src/a.prt").File("src/b.prt");
    Add("src/a.prt", "a.prt");
    Add("src/b.prt", "b.prt", FileMapping::NoFlag);
    QSignalSpy moved(importer.get(), &FileLinkImporterImp::FileMoved);
    QSignalSpy copied(importer.get(), &FileLinkImporterImp::FileCopied);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("src"), (FileTree::Snapshot{{"b.prt", "src/b.prt"}}));
    EXPECT_EQ(tree.Contents("cloud"),
              (FileTree::Snapshot{{"a.prt", "src/a.prt"}, {"b.prt", "src/b.prt"}}));
    ASSERT_EQ(moved.size(), 1);
    EXPECT_EQ(moved[0], (QVariantList{tree.Path("src/a.prt"), Cloud("a.prt")}));
    ASSERT_EQ(copied.size(), 1);
    EXPECT_EQ(copied[0], (QVariantList{tree.Path("src/b.prt"), Cloud("b.prt")}));
}

TEST_F(MoveFiles, AReadOnlySourceIsMovedToo)
{
    tree.File("src/a.prt");
    QFile::setPermissions(tree.Path("src/a.prt"), QFile::ReadOwner);
    const auto mapping = Add("src/a.prt", "a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_FALSE(tree.Exists("src/a.prt"));
    EXPECT_EQ(tree.Read("cloud/a.prt"), "src/a.prt");
    EXPECT_TRUE(mapping->HasFlag(FileMapping::Copied));
}

TEST_F(MoveFiles, EmptiedSourceFoldersGoDeepestFirst)
{
    tree.File("src/P/sub/deep/a.prt");
    AddFolder("src/P", "P");
    AddFolder("src/P/sub", "P/sub", FileMapping::NestedFolder);
    AddFolder("src/P/sub/deep", "P/sub/deep", FileMapping::NestedFolder);
    Add("src/P/sub/deep/a.prt", "P/sub/deep/a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("src"), (FileTree::Snapshot{}));
    EXPECT_FALSE(tree.Exists("src/P"));
    EXPECT_EQ(tree.Contents("cloud"),
              (FileTree::Snapshot{{"P/sub/deep/a.prt", "src/P/sub/deep/a.prt"}}));
}

TEST_F(MoveFiles, AFolderWithSomethingLeftInItStaysWithoutAWord)
{
    tree.File("src/P/a.prt").File("src/P/sub/left.txt").File("src/P/other/b.prt");
    AddFolder("src/P", "P");
    AddFolder("src/P/sub", "P/sub");
    AddFolder("src/P/other", "P/other");
    Add("src/P/a.prt", "P/a.prt");
    Add("src/P/other/b.prt", "P/other/b.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("src"), (FileTree::Snapshot{{"P/sub/left.txt", "src/P/sub/left.txt"}}));
    EXPECT_TRUE(LinesWith("ERROR").isEmpty());
    EXPECT_TRUE(LinesWith("WARN").isEmpty());
}

TEST_F(MoveFiles, FoldersThatAreKeptOrNotSelectedStay)
{
    tree.Folder("src/kept").Folder("src/linked").Folder("src/gone");
    AddFolder("src/kept", "kept", FileMapping::NoCopy);
    Add("src/linked", "linked", FileMapping::Folder);
    AddFolder("src/gone", "gone");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("src"), (FileTree::Snapshot{{"kept/", {}}, {"linked/", {}}}));
}

TEST_F(MoveFiles, FoldersStayWhenFilesAreCopied)
{
    Restart();
    tree.Folder("src/P");
    AddFolder("src/P", "P");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(tree.Exists("src/P"));
}

TEST_F(MoveFiles, AFailedCopyKeepsTheSourceAndItsFolder)
{
    tree.File("src/P/a.prt").Folder("cloud/P/a.prt");
    AddFolder("src/P", "P");
    Add("src/P/a.prt", "P/a.prt"); // a folder stands there
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("src"), (FileTree::Snapshot{{"P/a.prt", "src/P/a.prt"}}));
}

TEST_F(MoveFiles, AMovedFileKnowsThatItsSourceIsGone)
{
    tree.File("src/a.prt");
    const auto mapping = Add("src/a.prt", "a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_FALSE(mapping->GetSourceFileLastModified().isValid());
    EXPECT_EQ(mapping->GetTargetFileSize(), 9);
}

TEST_F(MoveFiles, AFileThatIsItsOwnTargetSurvivesAMove)
{
    tree.File("cloud/a.prt", "content");
    AddPaths(Cloud("a.prt"), Cloud("a.prt"));
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt", "content"}}));
}

} // namespace Halvern::Test
