// SPDX-License-Identifier: Apache-2.0

#include "RootedFolderFixture.h"
#include "base/RelativeWay.h"

#include <QtCore/QFile>

namespace Halvern::Test {

TEST_F(RootedFolders, HaveNoWayOut)
{
    tree.File(u"cloud/a.prt"_s).Folder(u"cloud/sub"_s);
    for (const QString& way :
         {u".."_s, u"../outside/x.prt"_s, u"sub/../../outside/x.prt"_s, u"sub/.."_s,
          u"sub/../a.prt"_s, tree.Path(u"outside/x.prt"_s), tree.Path(u"cloud/a.prt"_s)})
        ExpectRefused(way, FileProblem::LeadsOutside);
}

TEST_F(RootedFolders, SayWhichPathLeadsOut)
{
    EXPECT_EQ(root.MakeFolders("sub/../x").Text(), "sub/../x leads out of the folder");
}

TEST_F(RootedFolders, TellWhatIsThereAndWhatIsNot)
{
    tree.File(u"cloud/sub/a.prt"_s, "12345");
    Base::FileStatus status;
    ASSERT_TRUE(root.Status("sub/a.prt", status));
    EXPECT_EQ(status, Base::ReadFileStatus(Native(tree.Path(u"cloud/sub/a.prt"_s))));
    EXPECT_EQ(Kind(u"sub"_s), FileKind::Folder);
    EXPECT_EQ(Kind(u"./sub//a.prt"_s), FileKind::File);
    EXPECT_EQ(Kind(u""_s), FileKind::Folder);
    EXPECT_EQ(Kind(u"none"_s), FileKind::Missing);
    EXPECT_EQ(Kind(u"none/none/a.prt"_s), FileKind::Missing);
}

TEST_F(RootedFolders, TellAFileThatStandsWhereAFolderShouldBe)
{
    tree.File(u"cloud/a.prt"_s, "a").File(u"cloud/b.prt"_s, "b");
    Base::FileStatus status;
    EXPECT_EQ(root.Status("a.prt/c.prt", status).Problem(), FileProblem::NotAFolder);
    EXPECT_EQ(root.MakeFolders("a.prt").Problem(), FileProblem::NotAFolder);
    EXPECT_EQ(root.MakeFolders("a.prt/sub").Problem(), FileProblem::NotAFolder);
    EXPECT_EQ(Move(u"b.prt"_s, u"a.prt/b.prt"_s, Existing::Keep).Problem(),
              FileProblem::NotAFolder);
    EXPECT_EQ(tree.Read(u"cloud/b.prt"_s), "b");
}

TEST_F(RootedFolders, ListTheNamesInThemHiddenOnesToo)
{
    tree.File(u"cloud/sub/H\u00f6he.prt"_s).File(u"cloud/sub/.hidden"_s).Folder(u"cloud/empty"_s);
    EXPECT_EQ(Names(u"sub"_s), (std::set<std::string>{".hidden", "H\u00f6he.prt"}));
    EXPECT_EQ(Names(u"empty"_s), std::set<std::string>());
    EXPECT_EQ(Names(u""_s), (std::set<std::string>{"empty", "sub"}));
    std::vector<std::filesystem::path> names;
    EXPECT_EQ(root.List("none", names).Problem(), FileProblem::Missing);
    EXPECT_EQ(root.List("sub/.hidden", names).Problem(), FileProblem::NotAFolder);
}

TEST_F(RootedFolders, MakeTheFoldersThatAreMissingAndSayWhich)
{
    tree.Folder(u"cloud/a"_s);
    std::vector<std::filesystem::path> made;
    EXPECT_TRUE(root.MakeFolders("a/b/c", &made));
    EXPECT_EQ(made, (std::vector<std::filesystem::path>{Native(u"a/b"_s), Native(u"a/b/c"_s)}));
    EXPECT_EQ(Kind(u"a/b/c"_s), FileKind::Folder);
    made.clear();
    EXPECT_TRUE(root.MakeFolders("a/b/c", &made));
    EXPECT_TRUE(root.MakeFolders("", &made));
    EXPECT_TRUE(made.empty());
}

TEST_F(RootedFolders, SayWhichFoldersTheyMadeBeforeOneFailed)
{
    tree.Folder(u"cloud/a"_s);
    std::vector<std::filesystem::path> made;
    const std::filesystem::path tooLong = std::string(300, 'x');
    EXPECT_EQ(root.MakeFolders("a/b" / tooLong / "c", &made).Problem(), FileProblem::NameRefused);
    EXPECT_EQ(made, std::vector<std::filesystem::path>{Native(u"a/b"_s)});
}

TEST_F(RootedFolders, MakeAPrivateFolderOnlyWhereNothingIs)
{
    tree.Folder(u"cloud/taken"_s);
    EXPECT_TRUE(root.MakePrivateFolder(".own"));
    EXPECT_EQ(Kind(u".own"_s), FileKind::Folder);
    EXPECT_EQ(root.MakePrivateFolder("taken").Problem(), FileProblem::NameTaken);
    EXPECT_EQ(root.MakePrivateFolder("none/sub").Problem(), FileProblem::Missing);
}

TEST_F(RootedFolders, MoveFilesAndFoldersToFreeNames)
{
    tree.File(u"cloud/.own/1"_s, "a").File(u"cloud/f/x"_s, "x").Folder(u"cloud/sub"_s);
    EXPECT_TRUE(Move(u".own/1"_s, u"sub/a.prt"_s, Existing::Keep));
    EXPECT_TRUE(Move(u"f"_s, u"sub/g"_s, Existing::Keep));
    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u".own/"_s, ""}, {u"sub/a.prt"_s, "a"}, {u"sub/g/x"_s, "x"}}));
    EXPECT_EQ(Move(u"none"_s, u"sub/b.prt"_s, Existing::Keep).Problem(), FileProblem::Missing);
    EXPECT_EQ(Move(u"none"_s, u"sub/a.prt"_s, Existing::Replace).Problem(), FileProblem::Missing);
    EXPECT_EQ(Move(u"sub/a.prt"_s, u"none/b.prt"_s, Existing::Keep).Problem(),
              FileProblem::Missing);
    EXPECT_EQ(tree.Read(u"cloud/sub/a.prt"_s), "a");
}

TEST_F(RootedFolders, NeverOverwriteWithoutBeingTold)
{
    tree.File(u"cloud/a"_s, "a").File(u"cloud/b"_s, "b").Folder(u"cloud/f"_s);
    const FileTree::Snapshot before = tree.Contents();
    for (const QString& taken : {u"b"_s, u"f"_s, u"a"_s})
        EXPECT_EQ(Move(u"a"_s, taken, Existing::Keep).Problem(), FileProblem::NameTaken);
    EXPECT_EQ(Move(u"f"_s, u"b"_s, Existing::Keep).Problem(), FileProblem::NameTaken);
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(RootedFolders, ReplaceFilesButNoFolders)
{
    tree.File(u"cloud/a"_s, "a").File(u"cloud/b"_s, "b").File(u"cloud/c"_s, "c");
    tree.Folder(u"cloud/f"_s).Folder(u"cloud/g"_s);
    EXPECT_TRUE(Move(u"a"_s, u"b"_s, Existing::Replace));
    EXPECT_TRUE(Move(u"c"_s, u"d"_s, Existing::Replace));
    EXPECT_TRUE(Move(u"d"_s, u"d"_s, Existing::Replace));
    EXPECT_EQ(Move(u"b"_s, u"f"_s, Existing::Replace).Problem(), FileProblem::IsAFolder);
    EXPECT_EQ(Move(u"g"_s, u"f"_s, Existing::Replace).Problem(), FileProblem::IsAFolder);
    EXPECT_EQ(Move(u"g"_s, u"b"_s, Existing::Replace).Problem(), FileProblem::NotAFolder);
    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u"b"_s, "a"}, {u"d"_s, "c"}, {u"f/"_s, ""}, {u"g/"_s, ""}}));
}

TEST_F(RootedFolders, ReplaceAFileThatIsStillWhatItWas)
{
    tree.File(u"cloud/new"_s, "new").File(u"cloud/a"_s, "old");
    Base::FileStatus was;
    ASSERT_TRUE(root.Status("a", was));
    const Base::FileResult replaced = root.ReplaceUnchanged("new", "a", was);
    EXPECT_TRUE(replaced) << replaced.Text();
    EXPECT_EQ(Read(u"a"_s), "new");
    EXPECT_EQ(Names(u""_s), std::set<std::string>{"a"});
}

TEST_F(RootedFolders, ReplaceNothingThatHasChangedOrIsGoneOrIsAFolder)
{
    tree.File(u"cloud/new"_s, "new").File(u"cloud/a"_s, "old").Folder(u"cloud/folder"_s);
    Base::FileStatus was;
    ASSERT_TRUE(root.Status("a", was));
    tree.File(u"cloud/a"_s, "saved meanwhile");
    EXPECT_EQ(root.ReplaceUnchanged("new", "a", was).Problem(), FileProblem::Changed);
    EXPECT_EQ(Read(u"a"_s), "saved meanwhile");
    EXPECT_EQ(Read(u"new"_s), "new");
    // As a program saves that writes a new file and gives it the name.
    tree.Remove(u"cloud/a"_s).File(u"cloud/a"_s, "old");
    Base::FileStatus other = was;
    other.index += 1;
    EXPECT_EQ(root.ReplaceUnchanged("new", "a", other).Problem(), FileProblem::Changed);
    EXPECT_EQ(Read(u"a"_s), "old");
    EXPECT_EQ(root.ReplaceUnchanged("new", "folder", was).Problem(), FileProblem::Changed);
    EXPECT_EQ(Kind(u"folder"_s), FileKind::Folder);
    tree.Remove(u"cloud/a"_s);
    EXPECT_EQ(root.ReplaceUnchanged("new", "a", was).Problem(), FileProblem::Missing);
    EXPECT_EQ(Read(u"new"_s), "new");
}

TEST_F(RootedFolders, RemoveFilesEvenReadOnlyOnesAndFoldersWithoutContent)
{
    tree.File(u"cloud/f/a.prt"_s);
    ASSERT_TRUE(QFile::setPermissions(tree.Path(u"cloud/f/a.prt"_s), QFile::ReadOwner));
    EXPECT_EQ(root.RemoveFolder("f").Problem(), FileProblem::NotEmpty);
    EXPECT_EQ(root.Remove("f").Problem(), FileProblem::IsAFolder);
    EXPECT_EQ(root.RemoveFolder("f/a.prt").Problem(), FileProblem::NotAFolder);
    EXPECT_TRUE(root.Remove("f/a.prt"));
    EXPECT_TRUE(root.RemoveFolder("f"));
    EXPECT_EQ(root.Remove("f/a.prt").Problem(), FileProblem::Missing);
    EXPECT_EQ(root.RemoveFolder("f").Problem(), FileProblem::Missing);
    EXPECT_EQ(Names(u""_s), std::set<std::string>());
}

TEST_F(RootedFolders, AreNotRemovedOrMovedThemselves)
{
    tree.File(u"cloud/a"_s, "a");
    for (const char* self : {"", ".", "./"}) {
        EXPECT_EQ(root.Remove(self).Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(root.RemoveFolder(self).Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(root.MakePrivateFolder(self).Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(root.Move(self, "b", Existing::Keep).Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(root.Move("a", self, Existing::Replace).Problem(), FileProblem::LeadsOutside);
    }
    EXPECT_EQ(tree.Read(u"cloud/a"_s), "a");
}

TEST_F(RootedFolders, OpenRegularFilesForReading)
{
    tree.File(u"cloud/sub/a.prt"_s, "content");
    EXPECT_EQ(Read(u"sub/a.prt"_s), "content");
    Base::Handle handle = Base::NoHandle;
    EXPECT_EQ(root.OpenForReading("none", handle).Problem(), FileProblem::Missing);
    EXPECT_FALSE(root.OpenForReading("sub", handle));
    EXPECT_FALSE(root.OpenForReading("", handle));
    EXPECT_EQ(handle, Base::NoHandle);
}

TEST_F(RootedFolders, FlushFilesAndFolders)
{
    tree.File(u"cloud/sub/a.prt"_s);
    for (const char* entry : {"sub/a.prt", "sub", ""}) {
        const Base::FileResult flushed = root.Flush(entry);
        EXPECT_TRUE(flushed) << entry << flushed.Text();
    }
    EXPECT_EQ(root.Flush("sub/none").Problem(), FileProblem::Missing);
}

TEST_F(RootedFolders, WorkWithTheLongestNamesAndTellThoseThatAreTooLong)
{
    const QString longest(255, u'x');
    const QString tooLong(256, u'x');
    tree.File(u"cloud/a.prt"_s, "a");
    EXPECT_TRUE(root.MakeFolders(Native(longest)));
    EXPECT_TRUE(Move(u"a.prt"_s, longest + u'/' + longest, Existing::Keep));
    EXPECT_EQ(Read(longest + u'/' + longest), "a");
    Base::FileStatus status;
    EXPECT_EQ(root.Status(Native(tooLong), status).Problem(), FileProblem::NameRefused);
    EXPECT_EQ(Move(longest + u'/' + longest, tooLong, Existing::Keep).Problem(),
              FileProblem::NameRefused);
}

TEST_F(RootedFolders, MayBeFarDown)
{
    // More than any system takes as one path for files that have none of their own.
    const QString deep = (QString(100, u'd') + u'/').repeated(30);
    EXPECT_TRUE(root.MakeFolders(Native(deep)));
    tree.File(u"cloud/a.prt"_s, "a");
    EXPECT_TRUE(Move(u"a.prt"_s, deep + u"a.prt"_s, Existing::Keep));
    EXPECT_EQ(Read(deep + u"a.prt"_s), "a");
    EXPECT_EQ(Names(deep), std::set<std::string>{"a.prt"});
}

TEST_F(RootedFolders, ThatCannotBeOpenedLeaveOpenWhatWas)
{
    tree.File(u"cloud/a"_s, "a");
    EXPECT_EQ(root.Open(Native(tree.Path(u"none"_s))).Problem(), FileProblem::Missing);
    EXPECT_EQ(root.Open(Native(tree.Path(u"cloud/a"_s))).Problem(), FileProblem::NotAFolder);
    EXPECT_EQ(root.Path(), Native(tree.Path(u"cloud"_s)));
    EXPECT_EQ(Read(u"a"_s), "a");
    Base::RootedFolder closed;
    EXPECT_FALSE(closed.IsOpen());
    EXPECT_FALSE(closed.Open(Native(tree.Path(u"none"_s))));
    EXPECT_FALSE(closed.IsOpen());
}

TEST_F(RootedFolders, MayBeHandedOn)
{
    tree.File(u"cloud/a"_s, "a");
    Base::RootedFolder other = std::move(root);
    EXPECT_TRUE(other.IsOpen());
    root = std::move(other);
    EXPECT_EQ(root.Path(), Native(tree.Path(u"cloud"_s)));
    EXPECT_TRUE(root.IsAtItsPath());
    EXPECT_EQ(Read(u"a"_s), "a");
}

TEST(WaysBelowAFolder, ConsistOfNamesAlone)
{
    const auto names = [](const char* way) {
        std::vector<std::filesystem::path> found;
        EXPECT_TRUE(Base::NamesOnWay(way, found));
        return found;
    };
    using Names = std::vector<std::filesystem::path>;
    EXPECT_EQ(names("a/./b//c.prt"), (Names{"a", "b", "c.prt"}));
    EXPECT_EQ(names("a/b/"), (Names{"a", "b"}));
    EXPECT_EQ(names("..a"), Names{"..a"});
    EXPECT_EQ(names(""), Names());
    EXPECT_EQ(names("."), Names());
    Names found;
    EXPECT_EQ(Base::NamesOnWay(std::string("a\0b", 3), found).Problem(), FileProblem::NameRefused);
}

} // namespace Halvern::Test
