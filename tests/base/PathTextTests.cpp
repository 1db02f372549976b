// SPDX-License-Identifier: Apache-2.0

#include "base/PathText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Halvern::Base;

struct PathKind
{
    const char* name;
    std::u16string path;
    bool isUnc;
    bool isAbsoluteOnPosix;
    bool isAbsoluteOnWindows;
    bool isLocalOnPosix;
    bool isLocalOnWindows;
    bool isUrlLike;
};

void PrintTo(const PathKind& kind, std::ostream* out)
{
    *out << kind.name;
}

class PathKinds : public ::testing::TestWithParam<PathKind>
{};

TEST_P(PathKinds, AreToldByTheirTextOnEachSystem)
{
    const PathKind& kind = GetParam();
    EXPECT_EQ(IsUncPath(kind.path), kind.isUnc);
    EXPECT_EQ(IsAbsolutePath(kind.path, System::Posix), kind.isAbsoluteOnPosix);
    EXPECT_EQ(IsAbsolutePath(kind.path, System::Windows), kind.isAbsoluteOnWindows);
    EXPECT_EQ(IsLocalPath(kind.path, System::Posix), kind.isLocalOnPosix);
    EXPECT_EQ(IsLocalPath(kind.path, System::Windows), kind.isLocalOnWindows);
    EXPECT_EQ(IsUrlLike(kind.path), kind.isUrlLike);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PathKinds,
    ::testing::Values(PathKind{"Empty", u"", false, false, false, true, true, false},
                      PathKind{"Relative", u"sub/x.prt", false, false, false, true, true, false},
                      PathKind{"OneSlash", u"/", false, true, false, true, true, false},
                      PathKind{"OneBackslash", u"\\x", false, false, false, true, true, false},
                      PathKind{"PosixColon", u"/w/12:30", false, true, true, true, false, false},
                      PathKind{"Drive", u"D:/x", false, true, true, true, true, false},
                      PathKind{"DriveAlone", u"D:", false, true, true, true, true, false},
                      PathKind{"ColonFirst", u":x", false, true, true, true, true, false},
                      PathKind{"ColonThird", u"ab:x", false, true, true, false, false, true},
                      PathKind{"ColonLater", u"D:/a:b", false, true, true, true, true, false},
                      PathKind{"Url", u"http://host/x", false, true, true, false, false, true},
                      PathKind{"TwoSlashes", u"//srv/x", true, true, true, true, true, false},
                      PathKind{"Backslashes", u"\\\\srv\\x", true, true, true, true, true, false},
                      PathKind{"Mixed", u"/\\srv", true, true, true, true, true, false},
                      PathKind{"NetColon", u"//srv/a:b", true, true, true, false, false, false}),
    [](const auto& kind) { return kind.param.name; });

TEST(PathText, BeginsWithADriveOfOneLetter)
{
    for (const char16_t* const path : {u"D:", u"d:/a", u"Z:a"})
        EXPECT_TRUE(HasDrive(path));
    for (const char16_t* const path : {u"", u"D", u"1:/a", u"\u00c4:/a", u"DD:/a", u"/D:"})
        EXPECT_FALSE(HasDrive(path));
    EXPECT_TRUE(HasDrive("D:/a"));
    EXPECT_FALSE(HasDrive("/a"));
}

TEST(PathText, NamesAServerWithTwoSlashesAndAName)
{
    for (const char16_t* const path : {u"//server/share/a", u"\\\\server\\share", u"\\\\?\\D:\\a"})
        EXPECT_TRUE(NamesServer(path));
    for (const char16_t* const path :
         {u"", u"/", u"//", u"///a", u"/a", u"a//b", u"D:/a", u"D://a/b"})
        EXPECT_FALSE(NamesServer(path));
}

TEST(PathText, NamesADeviceOrIsTakenAsItIsWritten)
{
    for (const char16_t* const path :
         {u"//?/D:/a", u"\\\\?\\D:\\a", u"//./pipe/a", u"\\\\.\\D:", u"//?\\UNC\\server\\a"})
        EXPECT_TRUE(NamesDevice(path));
    for (const char16_t* const path : {u"", u"//?", u"//server/a", u"/?/D:/a", u"//?\?/a", u"./a",
                                       u"https://./a", u"//.server/a"})
        EXPECT_FALSE(NamesDevice(path));
}

TEST(PathText, MayLeadElsewhereWithTheCurrentDriveOfWindows)
{
    for (const char16_t* const path :
         {u"D:sync", u"D:", u"D:\twork", u"/server", u"\\a", u"/", u"\\", u"d:a/b"}) {
        EXPECT_TRUE(IsDriveRelative(path, System::Windows));
        EXPECT_FALSE(IsDriveRelative(path, System::Posix));
    }
    for (const char16_t* const path : {u"D:/Sync", u"D:\\Sync", u"D:/", u"//server/share",
                                       u"\\\\server\\share", u":memory:", u"data/sync.db", u""})
        EXPECT_FALSE(IsDriveRelative(path, System::Windows));
}

TEST(PathText, HasAFolderAboveItUnlessItIsARoot)
{
    EXPECT_EQ(ParentPath(u"D:/a/b"), u"D:/a");
    EXPECT_EQ(ParentPath(u"D:/a"), u"D:/");
    EXPECT_EQ(ParentPath(u"D:/"), u"");
    EXPECT_EQ(ParentPath(u"/a"), u"/");
    EXPECT_EQ(ParentPath(u"/"), u"");
    EXPECT_EQ(ParentPath(u"//server/share"), u"//server");
    EXPECT_EQ(ParentPath(u"//server"), u"");
    EXPECT_EQ(ParentPath(u"a"), u"");
}

TEST(PathText, IsJoinedWithOneSlash)
{
    EXPECT_EQ(JoinPath(u"D:/a", u"b/c"), u"D:/a/b/c");
    EXPECT_EQ(JoinPath(u"D:/", u"b"), u"D:/b");
    EXPECT_EQ(JoinPath(u"/a", u""), u"/a");
}

} // namespace
