// SPDX-License-Identifier: Apache-2.0

#include "base/SamePath.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::Base;

TEST(SamePath, DoesNotMindLetterCaseOnWindowsAlone)
{
    EXPECT_TRUE(IsSamePath(u"D:/H\u00d6HE.prt", u"d:/h\u00f6he.PRT", System::Windows));
    EXPECT_FALSE(IsSamePath(u"/H\u00d6HE.prt", u"/h\u00f6he.prt", System::Posix));
    EXPECT_TRUE(IsSamePath(u"/a", u"/a", System::Posix));
    EXPECT_FALSE(IsSamePath(u"D:/a", u"D:/ab", System::Windows));
}

TEST(SamePath, HasOneKeyForBothKindsOfSlashesOnWindowsAlone)
{
    EXPECT_EQ(SamePathKey(u"D:\\A/b", System::Windows), u"d:/a/b");
    EXPECT_EQ(SamePathKey(u"/A\\b", System::Posix), u"/A\\b");
}

TEST(PathBelow, IsWhatFollowsTheFolder)
{
    EXPECT_EQ(PathBelow(u"D:/Sync", u"d:/SYNC/a/b.prt"), u"a/b.prt");
    EXPECT_EQ(PathBelow(u"D:/", u"D:/a"), u"a");
    EXPECT_EQ(PathBelow(u"/", u"/a/b"), u"a/b");
    EXPECT_EQ(PathBelow(u"/sync", u"/sync"), u"");
}

TEST(PathBelow, IsNothingForASiblingWithTheSameBeginning)
{
    EXPECT_FALSE(PathBelow(u"/sync", u"/sync2/a"));
    EXPECT_FALSE(PathBelow(u"/sync", u"/syn"));
    EXPECT_FALSE(PathBelow(u"", u"/a"));
}

} // namespace
