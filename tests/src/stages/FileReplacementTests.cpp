// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"

#include <QtCore/QDir>
#include <QtTest/QSignalSpy>

namespace Halvern::Test {

namespace {

class FileReplacement : public CopyingFixture
{
protected:
    FileReplacement()
    {
        tree.File("src/Bracket.prt", "new").File("cloud/Bracket.prt", "old");
        bracket = Add("src/Bracket.prt", "Bracket.prt");
    }

    /// The copies in the base store.
    QList<QByteArray> BaseFiles() const
    {
        QList<QByteArray> copies;
        const QDir store(tree.Path("sync.db.base"));
        for (const QString& name : store.entryList({"*-*"}, QDir::Files))
            copies.append(tree.Read("sync.db.base/" + name));
        return copies;
    }

    FileMappingPointer bracket;
};

} // namespace

TEST_F(FileReplacement, LeavesNoTemporaryFileBehind)
{
    EXPECT_TRUE(Copy(bracket));
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"Bracket.prt", "new"}}));
}

TEST_F(FileReplacement, SavesTheOldFileAsTheBaseFileFirst)
{
    EXPECT_TRUE(Copy(bracket));
    EXPECT_EQ(BaseFiles(), QList<QByteArray>{"old"});
}

TEST_F(FileReplacement, ANewTargetHasNoBaseFile)
{
    EXPECT_TRUE(Copy(Add("src/Bracket.prt", "Other.prt")));
    EXPECT_TRUE(BaseFiles().isEmpty());
}

TEST_F(FileReplacement, AReadOnlyTargetIsNeitherSavedNorParked)
{
    QFile::setPermissions(Cloud("Bracket.prt"), QFile::ReadOwner | QFile::ReadUser);
    EXPECT_FALSE(Copy(bracket));
    EXPECT_TRUE(BaseFiles().isEmpty());
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"Bracket.prt", "old"}}));
    EXPECT_EQ(LinesWith("ERROR"), QStringList());
}

TEST_F(FileReplacement, StrangersUnderTemporaryNamesStay)
{
    tree.File("cloud/Bracket.prt.tmp", "stranger 1").File("cloud/Bracket.prt_2.tmp", "stranger 2");
    EXPECT_TRUE(Copy(bracket));
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"Bracket.prt", "new"},
                                                          {"Bracket.prt.tmp", "stranger 1"},
                                                          {"Bracket.prt_2.tmp", "stranger 2"}}));
}

TEST_F(FileReplacement, WhenACopyFailsTheOldFileKeepsItsTemporaryName)
{
    // A folder exists and can be looked at, but it has no bytes to copy.
    tree.Folder("src/folder");
    QSignalSpy copied(importer.get(), &FileLinkImporterImp::FileCopied);
    const auto mapping = Add("src/folder", "Bracket.prt");
    EXPECT_FALSE(Copy(mapping));
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"Bracket.prt.tmp", "old"}}));
    EXPECT_FALSE(mapping->HasFlag(FileMapping::Copied));
    EXPECT_FALSE(mapping->GetCopyDate().isValid());
    EXPECT_TRUE(copied.isEmpty());
    EXPECT_EQ(LinesWith("ERROR Failed to copy file " + tree.Path("src/folder") + " to " +
                        Cloud("Bracket.prt") + ". Error: ")
                  .size(),
              1);
}

TEST_F(FileReplacement, WhenTemporaryNamesAreTakenTheNextFreeOneHoldsTheOldFile)
{
    struct Row
    {
        const char* name;
        QStringList taken;
        QString parked;
    };
    const Row rows[] = {
        {"none taken", {}, "Bracket.prt.tmp"},
        {"first taken", {"Bracket.prt.tmp"}, "Bracket.prt_2.tmp"},
        {"two taken", {"Bracket.prt.tmp", "Bracket.prt_2.tmp"}, "Bracket.prt_3.tmp"},
        {"a gap", {"Bracket.prt.tmp", "Bracket.prt_3.tmp"}, "Bracket.prt_2.tmp"},
    };
    tree.Folder("src/folder");
    const auto mapping = Add("src/folder", "Bracket.prt");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        tree.Remove("cloud").File("cloud/Bracket.prt", "old");
        for (const QString& name : row.taken)
            tree.File("cloud/" + name, "stranger");
        EXPECT_FALSE(Copy(mapping));
        EXPECT_FALSE(tree.Exists("cloud/Bracket.prt"));
        EXPECT_EQ(tree.Read("cloud/" + row.parked), "old");
        for (const QString& name : row.taken)
            EXPECT_EQ(tree.Read("cloud/" + name), "stranger");
    }
}

TEST_F(FileReplacement, AFolderUnderTheTemporaryNameCountsAsTaken)
{
    tree.File("cloud/Bracket.prt.tmp/inside", "stranger");
    EXPECT_TRUE(Copy(bracket));
    EXPECT_EQ(tree.Contents("cloud"),
              (FileTree::Snapshot{{"Bracket.prt", "new"}, {"Bracket.prt.tmp/inside", "stranger"}}));
}

TEST_F(FileReplacement, AMoveReplacesTooAndDeletesTheSource)
{
    QSignalSpy moved(importer.get(), &FileLinkImporterImp::FileMoved);
    EXPECT_TRUE(Copy(bracket, true));
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"Bracket.prt", "new"}}));
    EXPECT_EQ(tree.Contents("src"), (FileTree::Snapshot{}));
    EXPECT_EQ(moved.size(), 1);
}

TEST_F(FileReplacement, EachReplacementStartsOverWithTheFirstTemporaryName)
{
    EXPECT_TRUE(Copy(bracket));
    tree.File("src/Bracket.prt", "newer");
    EXPECT_TRUE(Copy(bracket));
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"Bracket.prt", "newer"}}));
    EXPECT_EQ(BaseFiles().size(), 2);
}

} // namespace Halvern::Test
