// SPDX-License-Identifier: Apache-2.0

#include "Paths.h"

#include "FileTree.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

using namespace Halvern::Jobs;

TEST(JobPaths, ArgumentsBecomeAbsoluteAndLoseTrailingSlashesAndDots)
{
    const QString here = QDir::currentPath();
    EXPECT_EQ(AbsolutePath(u"."_qs), here);
    EXPECT_EQ(AbsolutePath(u"./"_qs), here);
    EXPECT_EQ(AbsolutePath(u"project/"_qs), here + u"/project"_qs);
    EXPECT_EQ(AbsolutePath(u"a/../b//c.gltf"_qs), here + u"/b/c.gltf"_qs);
    EXPECT_EQ(AbsolutePath(QString()), QString());
}

TEST(JobPaths, AFolderHoldsItselfAndWhatLiesBelowButNotASiblingWithItsNameInFront)
{
    EXPECT_TRUE(IsInFolder(u"/a/b"_qs, u"/a/b"_qs));
    EXPECT_TRUE(IsInFolder(u"/a/B/c"_qs, u"/a/b"_qs));
    EXPECT_TRUE(IsInFolder(u"/a"_qs, u"/"_qs));
    EXPECT_FALSE(IsInFolder(u"/a/bc"_qs, u"/a/b"_qs));
    EXPECT_FALSE(IsInFolder(u"/a"_qs, u"/a/b"_qs));
}

TEST(JobPaths, AFreeNameCountsUpFromTwoBeforeTheLastSuffix)
{
    const auto none = [](const QString&) { return false; };
    EXPECT_EQ(FreePath(u"/t/a.tar.gz"_qs, none), u"/t/a.tar (2).gz"_qs);
    EXPECT_EQ(FreePath(u"/t/README"_qs, none), u"/t/README (2)"_qs);
    EXPECT_EQ(FreePath(u"/t/%1.prt"_qs, none), u"/t/%1 (2).prt"_qs);
    const auto two = [](const QString& path) { return path == u"/t/a (2).prt"_qs; };
    EXPECT_EQ(FreePath(u"/t/a.prt"_qs, two), u"/t/a (3).prt"_qs);
}
