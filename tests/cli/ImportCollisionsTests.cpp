// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

namespace Halvern::Test {

namespace {

/// work/a.tlk links work/b.tlk; files of both names stand in the cloud cache folder already.
class ImportOverExistingFiles : public CommandFixture
{
protected:
    ImportOverExistingFiles()
    {
        tree.File(u"work/a.tlk"_qs, "link 1 b.tlk\n")
            .File(u"work/b.tlk"_qs, "new b\n")
            .File(u"cloud/a.tlk"_qs, "old a\n")
            .File(u"cloud/b.tlk"_qs, "old b\n");
    }
};

} // namespace

TEST_F(ImportOverExistingFiles, StopsBeforeAnythingIsCopiedAndListsThem)
{
    tree.File(u"work/free.tlk"_qs);
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = Import({u"a.tlk"_qs, u"free.tlk"_qs});
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_EQ(Cloud(), before);
    EXPECT_EQ(result.Lines(), (QStringList{u"conflict   a.tlk -> a.tlk: a file stands there"_qs,
                                           u"conflict   b.tlk -> b.tlk: a file stands there"_qs}));
    EXPECT_TRUE(result.err.contains(u"--collisions keep, rename or replace"_qs));
}

TEST_F(ImportOverExistingFiles, NeedsAPolicyForEachKindThatCollides)
{
    const CommandResult result = Import({u"a.tlk"_qs, u"--selected-collisions"_qs, u"replace"_qs});
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_EQ(result.Lines(), QStringList{u"conflict   b.tlk -> b.tlk: a file stands there"_qs});
    EXPECT_TRUE(result.err.contains(u"--linked-collisions"_qs));
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_qs), "old a\n");
}

TEST_F(ImportOverExistingFiles, KeepsThem)
{
    const CommandResult result = Import({u"a.tlk"_qs, u"--collisions"_qs, u"keep"_qs});
    EXPECT_TRUE(result.Has(u"kept       b.tlk -> b.tlk"_qs)) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_qs), "old b\n");
}

TEST_F(ImportOverExistingFiles, CopiesBesideThemUnderNewNamesThatTheLinksFollow)
{
    const CommandResult result = Import({u"a.tlk"_qs, u"--collisions"_qs, u"rename"_qs});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.Has(u"renamed    a.tlk -> a (2).tlk"_qs))
        << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"a.tlk"_qs, "old a\n"},
                                           {u"b.tlk"_qs, "old b\n"},
                                           {u"a (2).tlk"_qs, "link 1 b (2).tlk\n"},
                                           {u"b (2).tlk"_qs, "new b\n"}}));
}

TEST_F(ImportOverExistingFiles, ReplacesThemAndLeavesNoTemporaryFile)
{
    const CommandResult result = Import({u"a.tlk"_qs, u"--collisions"_qs, u"replace"_qs});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.Has(u"replaced   b.tlk -> b.tlk"_qs)) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(),
              (FileTree::Snapshot{{u"a.tlk"_qs, "link 1 b.tlk\n"}, {u"b.tlk"_qs, "new b\n"}}));
    EXPECT_EQ(Import({u"a.tlk"_qs}).exitCode, 0);
}

TEST_F(ImportOverExistingFiles, AnEditedCopyCollidesAgainAndAnEditedSourceToo)
{
    ASSERT_EQ(Import({u"a.tlk"_qs, u"--collisions"_qs, u"replace"_qs}).exitCode, 0);
    const QDateTime later = QDateTime::currentDateTime().addSecs(60);
    tree.Touch(u"cloud/a.tlk"_qs, later);
    EXPECT_EQ(Import({u"a.tlk"_qs}).Lines(),
              QStringList{u"conflict   a.tlk -> a.tlk: a file stands there"_qs});
    ASSERT_EQ(Import({u"a.tlk"_qs, u"--collisions"_qs, u"replace"_qs}).exitCode, 0);
    tree.Touch(u"work/b.tlk"_qs, later);
    EXPECT_EQ(Import({u"a.tlk"_qs}).Lines(),
              QStringList{u"conflict   b.tlk -> b.tlk: a file stands there"_qs});
}

TEST_F(ImportOverExistingFiles, AFolderThatExistsIsNoConflict)
{
    tree.File(u"work/proj/x.tlk"_qs, "x").File(u"cloud/proj/y.tlk"_qs, "y");
    const CommandResult result = Import({u"proj"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Contents(u"cloud/proj"_qs),
              (FileTree::Snapshot{{u"x.tlk"_qs, "x"}, {u"y.tlk"_qs, "y"}}));
}

TEST_F(ImportOverExistingFiles, TwoGivenFilesOfOneNameAreNamedBothAndNotCopied)
{
    tree.File(u"work/p/x.tlk"_qs, "p").File(u"work/q/x.tlk"_qs, "q");
    for (const QString& policy : {u"stop"_qs, u"keep"_qs, u"replace"_qs}) {
        const CommandResult result =
            Import({u"p/x.tlk"_qs, u"q/x.tlk"_qs, u"--collisions"_qs, policy});
        EXPECT_EQ(result.exitCode, 6) << policy.toStdString();
        EXPECT_EQ(result.Lines(),
                  QStringList{u"conflict   q/x.tlk -> x.tlk: also wanted by p/x.tlk"_qs});
        EXPECT_FALSE(tree.Exists(u"cloud/x.tlk"_qs));
    }
    const CommandResult result =
        Import({u"p/x.tlk"_qs, u"q/x.tlk"_qs, u"--collisions"_qs, u"rename"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(u"renamed    q/x.tlk -> x (2).tlk"_qs));
    EXPECT_EQ(tree.Read(u"cloud/x.tlk"_qs), "p");
    EXPECT_EQ(tree.Read(u"cloud/x (2).tlk"_qs), "q");
}

TEST_F(ImportOverExistingFiles, TwoLinkedFilesFromFoldersOfOneNameStayTwoFiles)
{
    tree.File(u"work/top.tlk"_qs, "link 1 p/lib/x.tlk\nlink 2 q/lib/x.tlk\n")
        .File(u"work/p/lib/x.tlk"_qs, "p")
        .File(u"work/q/lib/x.tlk"_qs, "q");
    EXPECT_EQ(Import({u"top.tlk"_qs}).exitCode, 6);
    EXPECT_FALSE(tree.Exists(u"cloud/top.tlk"_qs));
    const CommandResult result = Import({u"top.tlk"_qs, u"--linked-collisions"_qs, u"rename"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/top.tlk"_qs), "link 1 lib/x.tlk\nlink 2 lib/x (2).tlk\n");
    EXPECT_EQ(tree.Read(u"cloud/lib/x (2).tlk"_qs), "q");
    // Known by their sources from then on.
    EXPECT_EQ(Import({u"top.tlk"_qs}).exitCode, 0);
}

TEST_F(ImportOverExistingFiles, BothGivenNewNamesByOneRunGetDifferentOnes)
{
    tree.File(u"work/p/b.tlk"_qs, "p").File(u"work/q/b.tlk"_qs, "q");
    const CommandResult result =
        Import({u"p/b.tlk"_qs, u"q/b.tlk"_qs, u"--collisions"_qs, u"rename"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_qs), "old b\n");
    EXPECT_EQ(tree.Read(u"cloud/b (2).tlk"_qs), "p");
    EXPECT_EQ(tree.Read(u"cloud/b (3).tlk"_qs), "q");
}

TEST_F(ImportOverExistingFiles, ACopyThatIsInPlaceIsNotReplacedByAFileOfTheSameName)
{
    tree.File(u"work/top.tlk"_qs, "link 1 p/lib/x.tlk\n").File(u"work/p/lib/x.tlk"_qs, "p");
    ASSERT_EQ(Import({u"top.tlk"_qs}).exitCode, 0);
    tree.File(u"work/top.tlk"_qs, "link 1 p/lib/x.tlk\nlink 2 q/lib/x.tlk\n")
        .Touch(u"work/top.tlk"_qs, QDateTime::currentDateTime().addSecs(60))
        .File(u"work/q/lib/x.tlk"_qs, "q");
    EXPECT_EQ(Import({u"top.tlk"_qs, u"--collisions"_qs, u"replace"_qs}).exitCode, 6);
    EXPECT_EQ(tree.Read(u"cloud/lib/x.tlk"_qs), "p");
}

} // namespace Halvern::Test
