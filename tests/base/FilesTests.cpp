// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/Directory.h"
#include "base/FileAttributes.h"
#include "base/FileHandle.h"
#include "base/FileRenaming.h"
#include "base/FileStatus.h"
#include "base/KnownFolders.h"
#include "base/System.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>

#include <set>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class Files : public ::testing::Test
{
protected:
    std::filesystem::path Path(const QString& name) const { return Native(tree.Path(name)); }
    std::set<std::string> Names(const QString& folder) const
    {
        std::set<std::string> names;
        Base::VisitNames(Path(folder), [&](const std::string& name) {
            EXPECT_TRUE(names.insert(name).second) << name;
            return true;
        });
        return names;
    }

    FileTree tree;
    /// Far more than 260 characters.
    const QString deep = (QString(60, u'd') + u'/').repeated(6);
};

} // namespace

TEST_F(Files, HaveAStatusThatTellsFilesAndFoldersApart)
{
    tree.File(u"H\u00f6he.png"_s, "12345").Folder(u"folder"_s);
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(1'600'000'000'123);
    tree.Touch(u"H\u00f6he.png"_s, time);
    const Base::FileStatus file = Base::ReadFileStatus(Path(u"H\u00f6he.png"_s));
    EXPECT_EQ(file.kind, Base::FileKind::File);
    EXPECT_EQ(file.size, 5U);
    EXPECT_EQ(file.modified, 1'600'000'000'123'000'000);
    EXPECT_EQ(file.names, 1U);
    EXPECT_EQ(Base::ReadFileStatus(Path(u"folder"_s)).kind, Base::FileKind::Folder);
    EXPECT_FALSE(Base::ReadFileStatus(Path(u"none"_s)).Exists());
    EXPECT_TRUE(Base::IsFile(Path(u"H\u00f6he.png"_s)));
    EXPECT_FALSE(Base::IsFolder(Path(u"H\u00f6he.png"_s)));
    EXPECT_TRUE(Base::IsFolder(Path(u"folder"_s)));
    EXPECT_FALSE(Base::IsFile(Path(u"folder"_s)));
}

TEST_F(Files, AreTheSameHoweverTheyAreReached)
{
    tree.File(u"a/x.stp"_s).File(u"a/y.stp"_s).Folder(u"b"_s);
    EXPECT_TRUE(Base::IsSameFile(Path(u"a/x.stp"_s), Path(u"b"_s) / ".." / "a" / "x.stp"));
    EXPECT_FALSE(Base::IsSameFile(Path(u"a/x.stp"_s), Path(u"a/y.stp"_s)));
    EXPECT_FALSE(Base::IsSameFile(Path(u"a/none"_s), Path(u"a/none"_s)));
}

TEST_F(Files, OfAFolderAreShownOnceEachAsLongAsTheyAreWanted)
{
    tree.File(u"a/H\u00f6he.png"_s).File(u"a/.hidden"_s).Folder(u"a/b"_s).Folder(u"empty"_s);
    EXPECT_EQ(Names(u"a"_s), (std::set<std::string>{".hidden", "H\u00f6he.png", "b"}));
    EXPECT_EQ(Names(u"empty"_s), std::set<std::string>());
    EXPECT_EQ(Names(u"none"_s), std::set<std::string>());
    int count = 0;
    Base::VisitNames(Path(u"a"_s), [&](const std::string&) { return ++count < 2; });
    EXPECT_EQ(count, 2);
}

TEST_F(Files, MayHaveLongPaths)
{
    EXPECT_TRUE(Base::MakeFolders(Path(deep + u"sub"_s)));
    EXPECT_TRUE(Base::MakeFolders(Path(deep + u"sub"_s))) << "it is there already";
    EXPECT_TRUE(Base::IsFolder(Path(deep + u"sub"_s)));
    tree.File(deep + u"a.prt"_s, "a");
    EXPECT_EQ(Names(deep), (std::set<std::string>{"a.prt", "sub"}));
    EXPECT_TRUE(Base::Rename(Path(deep + u"a.prt"_s), Path(deep + u"sub/b.prt"_s)));
    EXPECT_EQ(tree.Read(deep + u"sub/b.prt"_s), "a");
}

TEST_F(Files, InTheWayOfAFolderAreAFailureWithAReason)
{
    tree.File(u"a"_s);
    const Base::FileResult made = Base::MakeFolders(Path(u"a"_s));
    EXPECT_FALSE(made);
    EXPECT_NE(made.Code(), 0U);
    EXPECT_FALSE(made.Text().empty());
    EXPECT_FALSE(Base::MakeFolders(Path(u"a/b"_s)));
}

TEST_F(Files, AreReadInPartsAndWrittenAtOnce)
{
    Base::Handle handle = Base::NoHandle;
    ASSERT_TRUE(Base::CreateExclusively(Path(u"a"_s), handle));
    ASSERT_NE(handle, Base::NoHandle);
    EXPECT_TRUE(Base::WriteAll(handle, "0123456789"));
    EXPECT_TRUE(Base::FlushToDisk(handle));
    char buffer[4] = {};
    std::size_t got = 0;
    EXPECT_TRUE(Base::ReadSome(handle, 7, buffer, sizeof buffer, got));
    EXPECT_EQ(std::string_view(buffer, got), "789");
    EXPECT_TRUE(Base::ReadSome(handle, 10, buffer, sizeof buffer, got));
    EXPECT_EQ(got, 0U);
    EXPECT_EQ(Base::ReadFileStatus(handle).size, 10U);
    Base::Close(handle);
    ASSERT_TRUE(Base::CreateExclusively(Path(u"a"_s), handle));
    EXPECT_EQ(handle, Base::NoHandle) << "the name is taken";
}

TEST_F(Files, ThatAreNoneAreNotOpened)
{
    tree.Folder(u"folder"_s);
    Base::Handle handle = Base::NoHandle;
    EXPECT_FALSE(Base::OpenForReading(Path(u"none"_s), handle));
    EXPECT_FALSE(Base::OpenForReading(Path(u"folder"_s), handle));
    EXPECT_EQ(handle, Base::NoHandle);
}

TEST_F(Files, TakeTheNameOfAnotherOnlyWhereThatIsWanted)
{
    tree.File(u"a"_s, "a").File(u"b"_s, "b").File(u"c"_s, "c");
    EXPECT_FALSE(Base::RenameToFree(Path(u"a"_s), Path(u"b"_s)));
    EXPECT_EQ(tree.Read(u"b"_s), "b");
    EXPECT_TRUE(Base::RenameOver(Path(u"a"_s), Path(u"b"_s)));
    EXPECT_EQ(tree.Read(u"b"_s), "a");
    EXPECT_TRUE(Base::RenameToFree(Path(u"c"_s), Path(u"d"_s)));
    EXPECT_EQ(tree.Read(u"d"_s), "c");
    EXPECT_FALSE(tree.Exists(u"a"_s));
    EXPECT_FALSE(tree.Exists(u"c"_s));
}

TEST_F(Files, ThatAreReadOnlyAreMadeWritableForAWhileAndRemoved)
{
    tree.File(u"a"_s);
    ASSERT_TRUE(QFile::setPermissions(tree.Path(u"a"_s), QFile::ReadOwner));
    EXPECT_FALSE(Base::IsWritable(Path(u"a"_s)));
    const Base::WriteRights rights = Base::AllowWriting(Path(u"a"_s));
    EXPECT_TRUE(Base::IsWritable(Path(u"a"_s)));
    Base::RestoreWriting(Path(u"a"_s), rights);
    EXPECT_FALSE(Base::IsWritable(Path(u"a"_s)));
    Base::RemoveFile(Path(u"a"_s));
    EXPECT_FALSE(tree.Exists(u"a"_s));
    EXPECT_FALSE(Base::IsWritable(Path(u"a"_s)));
}

TEST_F(Files, LoseOneOfTheirNamesEvenReadOnlyOnes)
{
    tree.File(u"a"_s, "a").Folder(u"folder"_s);
    ASSERT_TRUE(QFile::setPermissions(tree.Path(u"a"_s), QFile::ReadOwner));
    EXPECT_TRUE(Base::RemoveName(Path(u"a"_s)));
    EXPECT_FALSE(tree.Exists(u"a"_s));
    EXPECT_EQ(Base::RemoveName(Path(u"a"_s)).Problem(), Base::FileProblem::Missing);
    EXPECT_FALSE(Base::RemoveName(Path(u"folder"_s)));
    EXPECT_TRUE(tree.Exists(u"folder"_s));
}

TEST_F(Files, HaveNamesThatSurviveTheWayThroughThePathsOfTheSystem)
{
    for (const QString& name : {u"/w/H\u00f6he \u6728\U0001f332.png"_s, u"//server/share/a.prt"_s,
                                u"sub/a.prt"_s, u""_s}) {
        const std::filesystem::path path = Native(name);
        EXPECT_EQ(QStringView(Base::PathText(path)).toString(), name);
        EXPECT_EQ(Base::NativePath(name.toStdString()), path);
    }
    const QString name = u"/w/H\u00f6he \u6728\U0001f332.png"_s;
    EXPECT_EQ(Base::PathToUtf8(Native(name)), name.toStdString());
    EXPECT_EQ(Base::PathToUtf8(Native(u"a//b"_s)), "a/b");
}

TEST(KnownFolders, HoldTheRunningProgram)
{
    const std::filesystem::path program = Base::ProgramFile();
    EXPECT_TRUE(Base::IsFile(program));
    EXPECT_EQ(program.stem().string(), "base_tests");
    EXPECT_FALSE(Base::CommonDataFolder().empty());
}

TEST(KnownFolders, AreNamedByTheEnvironmentInAList)
{
    const bool isWindows = Base::ThisSystem == Base::System::Windows;
    qputenv("CORSYNC_TEST_FOLDERS", isWindows ? "D:/a;;D:/b" : "/a::/b");
    const std::vector<std::filesystem::path> expected =
        isWindows ? std::vector<std::filesystem::path>{"D:/a", "", "D:/b"}
                  : std::vector<std::filesystem::path>{"/a", "", "/b"};
    EXPECT_EQ(Base::EnvironmentPaths("CORSYNC_TEST_FOLDERS"), expected);
    qunsetenv("CORSYNC_TEST_FOLDERS");
    EXPECT_TRUE(Base::EnvironmentPaths("CORSYNC_TEST_FOLDERS").empty());
    EXPECT_TRUE(Base::EnvironmentPath("CORSYNC_TEST_FOLDERS").empty());
}

TEST(EntryNames, AreNoneForTheFolderItselfAndWithALoneSurrogate)
{
    EXPECT_EQ(Base::NameOfEntry(u"H\u00f6he \U0001f332.png"), "H\u00f6he \U0001f332.png");
    EXPECT_EQ(Base::NameOfEntry(u"..."), "...");
    EXPECT_FALSE(Base::NameOfEntry(u"."));
    EXPECT_FALSE(Base::NameOfEntry(u".."));
    EXPECT_FALSE(Base::NameOfEntry(std::u16string{u'a', char16_t(0xD83C)}));
}

} // namespace Halvern::Test
