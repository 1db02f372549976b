// SPDX-License-Identifier: Apache-2.0

// Attributes, names, links and open files of Windows below an open folder.

#include "RootedFolderFixture.h"

#include <windows.h>

namespace Halvern::Test {

namespace {

class RootedFoldersOnWindows : public RootedFolders
{
protected:
    std::wstring Wide(const QString& name) const { return Native(tree.Path(name)).wstring(); }
    DWORD Attributes(const QString& name) const { return ::GetFileAttributesW(Wide(name).c_str()); }
    void MakeReadOnly(const QString& name)
    {
        ASSERT_TRUE(::SetFileAttributesW(Wide(name).c_str(), FILE_ATTRIBUTE_READONLY));
    }
    void HardLink(const QString& file, const QString& name)
    {
        ASSERT_TRUE(::CreateHardLinkW(Wide(name).c_str(), Wide(file).c_str(), nullptr));
    }
};

} // namespace

TEST_F(RootedFoldersOnWindows, HaveNoWayOutThatOnlyWindowsKnows)
{
    tree.File(u"cloud/a.prt"_s).Folder(u"cloud/sub"_s);
    for (const QString& way :
         {u"..\\outside\\x.prt"_s, u"sub\\..\\..\\outside\\x.prt"_s, u"\\outside"_s, u"C:a.prt"_s,
          u"C:\\a.prt"_s, u"\\\\server\\share"_s, u"\\\\?\\C:\\a.prt"_s})
        ExpectRefused(way, FileProblem::LeadsOutside);
}

TEST_F(RootedFoldersOnWindows, RefuseNamesThatWindowsWouldTakeForOthers)
{
    tree.File(u"cloud/a.prt"_s);
    for (const QString& way : {u"a.prt:stream"_s, u"aux"_s, u"sub/con.prt"_s, u"a.prt."_s,
                               u"a.prt "_s, u"..."_s, u".. "_s, u"b?.prt"_s, u"sub/b*"_s})
        ExpectRefused(way, FileProblem::NameRefused);
}

// Both systems have a link of their own in the root of a disk: a junction, and Wine the one of its
// host.
TEST_F(RootedFoldersOnWindows, LeadThroughNoLink)
{
    const bool isWine = ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    const std::filesystem::path disk = isWine ? L"Z:\\" : L"C:\\";
    const std::filesystem::path link = isWine ? L"bin" : L"Documents and Settings";
    const std::filesystem::path folder = isWine ? L"usr" : L"Users";
    Base::Handle handle = Base::NoHandle;
    Base::FileStatus status;
    std::vector<std::filesystem::path> names;
    ASSERT_TRUE(root.Open(disk));
    ASSERT_TRUE(root.Status(folder, status));
    EXPECT_EQ(status.kind, FileKind::Folder);
    ASSERT_TRUE(root.Status(link, status));
    EXPECT_EQ(status.kind, FileKind::Link);
    EXPECT_EQ(Base::ReadLinkStatus(disk / link).kind, FileKind::Link);
    EXPECT_EQ(Base::ReadFileStatus(disk / link).kind, FileKind::Folder);
    EXPECT_EQ(root.Status(link / L"x", status).Problem(), FileProblem::LeadsOutside);
    EXPECT_EQ(root.List(link, names).Problem(), FileProblem::LeadsOutside);
    EXPECT_EQ(root.OpenForReading(link / L"x", handle).Problem(), FileProblem::LeadsOutside);
}

TEST_F(RootedFoldersOnWindows, HideAPrivateFolder)
{
    EXPECT_TRUE(root.MakePrivateFolder(L".own"));
    EXPECT_TRUE(root.MakeFolders(L"sub"));
    EXPECT_TRUE(Attributes(u"cloud/.own"_s) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_FALSE(Attributes(u"cloud/sub"_s) & FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(RootedFoldersOnWindows, HideAFolderThatIsThereAndNothingElse)
{
    tree.Folder(u"outside/seen"_s);
    EXPECT_TRUE(root.MakeFolders(L"sub/deep"));
    EXPECT_TRUE(root.Hide(L"sub"));
    EXPECT_TRUE(Attributes(u"cloud/sub"_s) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(Attributes(u"cloud/sub"_s) & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_FALSE(Attributes(u"cloud/sub/deep"_s) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_EQ(root.Hide(L"none").Problem(), FileProblem::Missing);
    EXPECT_EQ(root.Hide(L"../outside/seen").Problem(), FileProblem::LeadsOutside);
    EXPECT_FALSE(Attributes(u"outside/seen"_s) & FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(RootedFoldersOnWindows, ReplaceNoReadOnlyFile)
{
    tree.File(u"cloud/a"_s, "a").File(u"cloud/b"_s, "b");
    MakeReadOnly(u"cloud/b"_s);
    const Base::FileResult moved = Move(u"a"_s, u"b"_s, Existing::Replace);
    EXPECT_FALSE(moved);
    EXPECT_FALSE(moved.IsHeld());
    EXPECT_EQ(tree.Read(u"cloud/a"_s), "a");
    EXPECT_EQ(tree.Read(u"cloud/b"_s), "b");
}

TEST_F(RootedFoldersOnWindows, FlushAReadOnlyFileThatStaysReadOnly)
{
    tree.File(u"cloud/a"_s);
    MakeReadOnly(u"cloud/a"_s);
    const Base::FileResult flushed = root.Flush(L"a");
    EXPECT_TRUE(flushed) << flushed.Text();
    EXPECT_TRUE(Attributes(u"cloud/a"_s) & FILE_ATTRIBUTE_READONLY);
}

TEST_F(RootedFoldersOnWindows, RemoveOneNameOfAReadOnlyFileThatStaysReadOnly)
{
    tree.File(u"cloud/a"_s, "a");
    HardLink(u"cloud/a"_s, u"outside/a"_s);
    MakeReadOnly(u"cloud/a"_s);
    EXPECT_TRUE(root.Remove(L"a"));
    EXPECT_FALSE(tree.Exists(u"cloud/a"_s));
    EXPECT_EQ(tree.Read(u"outside/a"_s), "a");
    EXPECT_TRUE(Attributes(u"outside/a"_s) & FILE_ATTRIBUTE_READONLY);
}

TEST_F(RootedFoldersOnWindows, MoveOneNameOfAFileOntoAnotherOneOfIt)
{
    tree.File(u"cloud/a"_s, "a");
    HardLink(u"cloud/a"_s, u"cloud/b"_s);
    EXPECT_TRUE(Move(u"a"_s, u"b"_s, Existing::Replace));
    EXPECT_EQ(Names(u""_s), std::set<std::string>{"b"});
    EXPECT_EQ(Read(u"b"_s), "a");
}

// Wine leaves the name as it was.
TEST_F(RootedFoldersOnWindows, LoseNoFileThatIsToHaveItsNameInAnotherLetterCase)
{
    tree.File(u"cloud/a.prt"_s, "a");
    EXPECT_TRUE(Move(u"a.prt"_s, u"A.PRT"_s, Existing::Replace));
    EXPECT_EQ(Names(u""_s).size(), 1U);
    EXPECT_EQ(Read(u"A.PRT"_s), "a");
}

TEST_F(RootedFoldersOnWindows, SayThatAnotherProgramHasTheFile)
{
    tree.File(u"cloud/a"_s, "a").File(u"cloud/b"_s, "b");
    const HANDLE held = ::CreateFileW(Wide(u"cloud/b"_s).c_str(), GENERIC_READ, 0, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_EQ(Move(u"a"_s, u"b"_s, Existing::Replace).Problem(), FileProblem::Held);
    EXPECT_EQ(Move(u"b"_s, u"c"_s, Existing::Keep).Problem(), FileProblem::Held);
    EXPECT_EQ(root.Remove(L"b").Problem(), FileProblem::Held);
    ::CloseHandle(held);
    EXPECT_TRUE(Move(u"a"_s, u"b"_s, Existing::Replace));
}

} // namespace Halvern::Test
