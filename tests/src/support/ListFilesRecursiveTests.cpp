// SPDX-License-Identifier: Apache-2.0

#include "ListFilesFixture.h"

namespace Halvern::Test {

namespace {

constexpr QDir::Filters Everything = QDir::Dirs | QDir::Files | QDir::Hidden;

} // namespace

TEST_F(ListFiles, WithoutAFilterGivesTheFilesOfAFolder)
{
    EXPECT_EQ(Sorted(u"t"_s, QString(), {}, false), (QStringList{u"a.prt"_s, u"b.asm"_s}));
}

TEST_F(ListFiles, GivesFoldersAndHiddenEntriesOnlyWhenAsked)
{
    EXPECT_EQ(Sorted(u"t"_s, QString(), QDir::Dirs, false), (QStringList{u"empty"_s, u"sub"_s}));
    EXPECT_EQ(
        Sorted(u"t"_s, QString(), Everything, false),
        (QStringList{u".hidden"_s, u".secret"_s, u"a.prt"_s, u"b.asm"_s, u"empty"_s, u"sub"_s}));
}

TEST_F(ListFiles, TakesSeveralPatternsBetweenBars)
{
    EXPECT_EQ(Sorted(u"t"_s, u"*.prt|b.*"_s, {}, false), (QStringList{u"a.prt"_s, u"b.asm"_s}));
    EXPECT_EQ(Sorted(u"t"_s, u"*.asm"_s, {}, false), QStringList{u"b.asm"_s});
    EXPECT_EQ(Sorted(u"t"_s, u"*.none|*.asm"_s, {}, false), QStringList{u"b.asm"_s});
}

TEST_F(ListFiles, PassesOverEmptyPatternsBetweenBars)
{
    EXPECT_EQ(Sorted(u"t"_s, u"|*.asm||"_s, {}, false), QStringList{u"b.asm"_s});
}

TEST_F(ListFiles, OfAFileGivesTheFilesOfItsFolderThatMatchItsName)
{
    EXPECT_EQ(List(u"t/a.prt"_s, u"*.asm"_s, {}, false), QStringList{u"a.prt"_s});
    EXPECT_EQ(List(u"t/gone.prt"_s, QString(), {}, false), QStringList());
    EXPECT_EQ(Sorted(u"t/*.prt"_s, QString(), {}, false), QStringList{u"a.prt"_s});
}

TEST_F(ListFiles, OfAFileLooksForItsNameInSubfoldersToo)
{
    tree.File(u"t/sub/a.prt"_s).File(u"t/sub/deep/a.prt"_s);
    EXPECT_EQ(List(u"t/a.prt"_s, QString(), {}, true),
              (QStringList{u"a.prt"_s, u"sub/a.prt"_s, u"sub/deep/a.prt"_s}));
}

TEST_F(ListFiles, GivesTheFilesOfAFolderBeforeItsSubfolders)
{
    tree.Remove(u"t/b.asm"_s).Remove(u"t/empty"_s);
    EXPECT_EQ(List(u"t"_s, QString(), {}, true),
              (QStringList{u"a.prt"_s, u"sub/c.prt"_s, u"sub/deep/d.prt"_s}));
}

TEST_F(ListFiles, LetsEachSubfolderBeFollowedByItsContents)
{
    tree.Remove(u"t/b.asm"_s).Remove(u"t/empty"_s);
    EXPECT_EQ(
        List(u"t"_s, QString(), QDir::Dirs | QDir::Files, true),
        (QStringList{u"a.prt"_s, u"sub"_s, u"sub/c.prt"_s, u"sub/deep"_s, u"sub/deep/d.prt"_s}));
    EXPECT_EQ(List(u"t"_s, QString(), QDir::Dirs, true), (QStringList{u"sub"_s, u"sub/deep"_s}));
}

TEST_F(ListFiles, DescendsIntoFoldersWhoseNamesDoNotMatch)
{
    EXPECT_EQ(Sorted(u"t"_s, u"d.prt"_s, {}, true), QStringList{u"sub/deep/d.prt"_s});
    EXPECT_EQ(Sorted(u"t"_s, u"d.prt"_s, QDir::Dirs | QDir::Files, true),
              (QStringList{u"empty"_s, u"sub"_s, u"sub/deep"_s, u"sub/deep/d.prt"_s}))
        << "name patterns do not hold for folders";
}

TEST_F(ListFiles, DescendsIntoHiddenFoldersOnlyWhenAsked)
{
    EXPECT_FALSE(List(u"t"_s, QString(), QDir::Files, true).contains(u".secret/e.prt"_s));
    EXPECT_TRUE(
        List(u"t"_s, QString(), QDir::Files | QDir::Hidden, true).contains(u".secret/e.prt"_s));
}

TEST_F(ListFiles, WithoutRecursionListsFoldersWithoutTheirContents)
{
    EXPECT_EQ(Sorted(u"t/sub"_s, QString(), QDir::Dirs | QDir::Files, false),
              (QStringList{u"sub/c.prt"_s, u"sub/deep"_s}));
}

TEST_F(ListFiles, GivesCleanPaths)
{
    EXPECT_EQ(ListFilesRecursive(tree.Path() + u"/t/./sub/../sub"_s, QString(), {}, false),
              QStringList{tree.Path(u"t/sub/c.prt"_s)});
}

} // namespace Halvern::Test
