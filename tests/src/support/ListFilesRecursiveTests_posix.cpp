// SPDX-License-Identifier: Apache-2.0

// Symbolic links, as every user can make them on POSIX.

#include "ListFilesFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

TEST_F(ListFiles, FollowsLinksToFilesAndFolders)
{
    tree.File(u"far/f.prt"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"far"_s), tree.Path(u"t/empty/way"_s)));
    ASSERT_TRUE(QFile::link(tree.Path(u"far/f.prt"_s), tree.Path(u"t/empty/g.prt"_s)));
    EXPECT_EQ(List(u"t/empty"_s, QString(), {}, true),
              (QStringList{u"empty/g.prt"_s, u"empty/way/f.prt"_s}));
}

TEST_F(ListFiles, PassesOverALinkThatLeadsNowhereWhereItLooksForFolders)
{
    ASSERT_TRUE(QFile::link(tree.Path(u"nowhere"_s), tree.Path(u"t/empty/way"_s)));
    EXPECT_EQ(List(u"t/empty"_s, QString(), QDir::Dirs | QDir::Files | QDir::System, true),
              QStringList{u"empty/way"_s})
        << "it stands there as a file, once";
}

TEST_F(ListFiles, ComesToAnEndAtALinkToAFolderAbove)
{
    ASSERT_TRUE(QFile::link(tree.Path(u"t"_s), tree.Path(u"t/sub/up"_s)));
    ASSERT_TRUE(QFile::link(tree.Path(u"t/sub"_s), tree.Path(u"t/sub/self"_s)));
    const QStringList files = List(u"t"_s, u"*.prt"_s, {}, true);
    EXPECT_EQ(files.size(), 3);
    EXPECT_EQ(files.count(u"sub/c.prt"_s), 1);
}

TEST_F(ListFiles, ComesToAnEndWhereLinksLeadInACircle)
{
    tree.File(u"x/x.prt"_s).File(u"y/y.prt"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"x"_s), tree.Path(u"t/empty/way"_s)));
    ASSERT_TRUE(QFile::link(tree.Path(u"y"_s), tree.Path(u"x/toY"_s)));
    ASSERT_TRUE(QFile::link(tree.Path(u"x"_s), tree.Path(u"y/toX"_s)));
    EXPECT_EQ(List(u"t/empty"_s, QString(), {}, true),
              (QStringList{u"empty/way/x.prt"_s, u"empty/way/toY/y.prt"_s}));
}

TEST_F(ListFiles, StaysInAFolderThatALinkLeadsOutOfUpwards)
{
    ASSERT_TRUE(QFile::link(tree.Path(), tree.Path(u"t/sub/out"_s)));
    ASSERT_TRUE(QFile::link(QDir::rootPath(), tree.Path(u"t/sub/root"_s)));
    EXPECT_EQ(List(u"t/sub"_s, u"*.prt"_s, {}, true),
              (QStringList{u"sub/c.prt"_s, u"sub/deep/d.prt"_s}));
}

} // namespace Halvern::Test
