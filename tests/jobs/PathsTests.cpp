// SPDX-License-Identifier: Apache-2.0

#include "Paths.h"

#include "FileTree.h"

#include <QtCore/QDir>
#include <QtCore/QSet>

#include <gtest/gtest.h>

using namespace Halvern::Jobs;
using namespace Qt::StringLiterals;

TEST(JobPaths, ArgumentsBecomeAbsoluteAndLoseTrailingSlashesAndDots)
{
    const QString here = QDir::currentPath();
    EXPECT_EQ(AbsolutePath(u"."_s), here);
    EXPECT_EQ(AbsolutePath(u"./"_s), here);
    EXPECT_EQ(AbsolutePath(u"project/"_s), here + u"/project"_s);
    EXPECT_EQ(AbsolutePath(u"a/../b//c.gltf"_s), here + u"/b/c.gltf"_s);
    EXPECT_EQ(AbsolutePath(QString()), QString());
}

TEST(JobPaths, AFolderHoldsItselfAndWhatLiesBelowButNotASiblingWithItsNameInFront)
{
    EXPECT_TRUE(IsInFolder(u"/a/b"_s, u"/a/b"_s));
    EXPECT_TRUE(IsInFolder(u"/a/B/c"_s, u"/a/b"_s));
    EXPECT_TRUE(IsInFolder(u"/a"_s, u"/"_s));
    EXPECT_FALSE(IsInFolder(u"/a/bc"_s, u"/a/b"_s));
    EXPECT_FALSE(IsInFolder(u"/a"_s, u"/a/b"_s));
}

TEST(JobPaths, AFreeNameCountsUpFromTwoBeforeTheLastSuffix)
{
    const auto none = [](const QString&) { return false; };
    EXPECT_EQ(FreePath(u"/t/a.tar.gz"_s, none), u"/t/a.tar (2).gz"_s);
    EXPECT_EQ(FreePath(u"/t/README"_s, none), u"/t/README (2)"_s);
    EXPECT_EQ(FreePath(u"/t/%1.prt"_s, none), u"/t/%1 (2).prt"_s);
    const auto two = [](const QString& path) { return path == u"/t/a (2).prt"_s; };
    EXPECT_EQ(FreePath(u"/t/a.prt"_s, two), u"/t/a (3).prt"_s);
}

TEST(JobPaths, AFreeNameIsLookedForFromTheNumberThatTheLastOneGot)
{
    QSet<QString> taken{u"/t/a.prt"_s};
    int number = 2;
    int looks = 0;
    for (int i = 2; i < 1000; ++i) {
        const QString path = FreePath(u"/t/a.prt"_s, number, [&](const QString& candidate) {
            ++looks;
            return taken.contains(candidate);
        });
        EXPECT_EQ(path, u"/t/a (%1).prt"_s.arg(i));
        taken.insert(path);
    }
    EXPECT_LT(looks, 2000);
}
