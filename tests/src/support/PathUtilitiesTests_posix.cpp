// SPDX-License-Identifier: Apache-2.0

// Paths that begin at the one root of the file system, which Windows does not have.

#include "support/PathUtilities.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Qt::StringLiterals;

TEST(AbsolutePaths, MayBeginAtTheFileSystemRootAndHoldColons)
{
    EXPECT_EQ(MakeAbsolutePath(u"/y/./12:30.prt"_s, u"/t"_s, false), u"/y/12:30.prt"_s);
}

TEST(PosixRoot, IsAFolderThatPathsCanBeRelativeTo)
{
    EXPECT_EQ(MakeRelativePath(u"/w/x.prt"_s, u"/"_s, false), u"w/x.prt"_s);
    EXPECT_EQ(MakeRelativePath(u"/"_s, u"/w/t"_s, false), u"../.."_s);
}

TEST(DriveNames, CountAloneOrWithASlashBehindThem)
{
    EXPECT_EQ(MakeRelativePath(u"D:/t/x.prt"_s, u"D:"_s, false), u"t/x.prt"_s);
    EXPECT_EQ(MakeRelativePath(u"D:x.prt"_s, u"D:/t"_s, false), u"D:x.prt"_s);
    EXPECT_EQ(MakeRelativePath(u"1:/x.prt"_s, u"D:/t"_s, false), u"1:/x.prt"_s);
}

TEST(PosixRoot, HoldsEveryOtherLocalPath)
{
    EXPECT_TRUE(IsPathUnder(u"/"_s, u"/a"_s));
    EXPECT_TRUE(IsPathUnder(u"/"_s, u"/a/b"_s));
    EXPECT_FALSE(IsPathUnder(u"/"_s, u"a"_s));
    EXPECT_FALSE(IsPathUnder(u"/"_s, u"D:/a"_s));
}

TEST(PosixRoot, OfSeveralSlashesIsNoServer)
{
    EXPECT_EQ(NormalizeServerPath(u"///a/b//"_s), u"a/b"_s);
}

} // namespace
