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
