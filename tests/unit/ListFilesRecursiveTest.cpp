#include "FileTree.h"
#include "support/PathUtilities.h"

#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

constexpr QDir::Filters Everything = QDir::Dirs | QDir::Files | QDir::Hidden;

class ListFiles : public ::testing::Test
{
protected:
    ListFiles()
    {
        tree.File(u"t/a.prt"_s).File(u"t/b.asm"_s).File(u"t/.hidden"_s);
        tree.File(u"t/sub/c.prt"_s).File(u"t/sub/deep/d.prt"_s);
        tree.File(u"t/.secret/e.prt"_s).Folder(u"t/empty"_s);
    }
    /// Names below "t", in the order of the answer.
    QStringList List(const QString& path, const QString& names, QDir::Filters filters,
                     bool recursive)
    {
        QStringList result;
        for (const QString& entry :
             ListFilesRecursive(tree.Path(path), names, filters, recursive)) {
            EXPECT_TRUE(entry.startsWith(tree.Path(u"t"_s) + u'/')) << entry.toStdString();
            result.append(entry.mid(tree.Path(u"t"_s).size() + 1));
        }
        return result;
    }
    QStringList Sorted(const QString& path, const QString& names, QDir::Filters filters,
                       bool recursive)
    {
        QStringList result = List(path, names, filters, recursive);
        result.sort();
        return result;
    }

    FileTree tree;
};

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

TEST_F(ListFiles, FollowsLinksToFilesAndFolders)
{
    tree.File(u"far/f.prt"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"far"_s), tree.Path(u"t/empty/way"_s)));
    ASSERT_TRUE(QFile::link(tree.Path(u"far/f.prt"_s), tree.Path(u"t/empty/g.prt"_s)));
    EXPECT_EQ(List(u"t/empty"_s, QString(), {}, true),
              (QStringList{u"empty/g.prt"_s, u"empty/way/f.prt"_s}));
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

} // namespace
