// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// work/a.tlk links work/b.tlk; files of both names stand in the cloud cache folder already.
class ImportOverExistingFiles : public CommandFixture
{
protected:
    ImportOverExistingFiles()
    {
        tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n")
            .File(u"work/b.tlk"_s, "new b\n")
            .File(u"cloud/a.tlk"_s, "old a\n")
            .File(u"cloud/b.tlk"_s, "old b\n");
    }
};

} // namespace

TEST_F(ImportOverExistingFiles, StopsBeforeAnythingIsCopiedAndListsThem)
{
    tree.File(u"work/free.tlk"_s);
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = Import({u"a.tlk"_s, u"free.tlk"_s});
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_EQ(Cloud(), before);
    EXPECT_EQ(result.Lines(), (QStringList{u"conflict   a.tlk -> a.tlk: a file stands there"_s,
                                           u"conflict   b.tlk -> b.tlk: a file stands there"_s}));
    EXPECT_TRUE(result.err.contains(u"--collisions keep, replace or rename"_s));
}

TEST_F(ImportOverExistingFiles, NeedsAPolicyForEachKindThatCollides)
{
    const CommandResult result = Import({u"a.tlk"_s, u"--selected-collisions"_s, u"replace"_s});
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_EQ(result.Lines(), QStringList{u"conflict   b.tlk -> b.tlk: a file stands there"_s});
    EXPECT_TRUE(result.err.contains(u"--linked-collisions"_s));
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_s), "old a\n");
}

TEST_F(ImportOverExistingFiles, NamesOnlyPoliciesThatHelp)
{
    tree.File(u"work/c.tlk"_s).Folder(u"cloud/c.tlk"_s);
    const CommandResult folder = Import({u"c.tlk"_s});
    EXPECT_EQ(folder.exitCode, 6);
    EXPECT_TRUE(folder.err.contains(u"move what stands in the way"_s))
        << ::testing::PrintToString(folder);
    EXPECT_FALSE(folder.err.contains(u"collisions"_s)) << ::testing::PrintToString(folder);
    tree.File(u"work/d.tlk"_s, "new").File(u"cloud/d.tlk"_s, "old");
    QFile readOnly(tree.Path(u"cloud/d.tlk"_s));
    ASSERT_TRUE(readOnly.setPermissions(QFile::ReadOwner | QFile::ReadUser));
    const CommandResult file = Import({u"d.tlk"_s});
    const QList<QJsonObject> json = Import({u"d.tlk"_s, u"--json"_s}).Json();
    readOnly.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser |
                            QFile::WriteUser);
    EXPECT_TRUE(file.err.contains(u"--selected-collisions keep or rename\n"_s))
        << ::testing::PrintToString(file);
    ASSERT_FALSE(json.isEmpty());
    EXPECT_EQ(json[0][u"answers"].toArray(), (QJsonArray{u"keep"_s, u"rename"_s}));
}

TEST_F(ImportOverExistingFiles, KeepsThem)
{
    const CommandResult result = Import({u"a.tlk"_s, u"--collisions"_s, u"keep"_s});
    EXPECT_TRUE(result.Has(u"kept       b.tlk -> b.tlk"_s)) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_s), "old b\n");
}

TEST_F(ImportOverExistingFiles, CopiesBesideThemUnderNewNamesThatTheLinksFollow)
{
    const CommandResult result = Import({u"a.tlk"_s, u"--collisions"_s, u"rename"_s});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.Has(u"renamed    a.tlk -> a (2).tlk"_s)) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"a.tlk"_s, "old a\n"},
                                           {u"b.tlk"_s, "old b\n"},
                                           {u"a (2).tlk"_s, "link 1 b (2).tlk\n"},
                                           {u"b (2).tlk"_s, "new b\n"}}));
}

TEST_F(ImportOverExistingFiles, ReplacesThemAndLeavesNoTemporaryFile)
{
    const CommandResult result = Import({u"a.tlk"_s, u"--collisions"_s, u"replace"_s});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.Has(u"replaced   b.tlk -> b.tlk"_s)) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(),
              (FileTree::Snapshot{{u"a.tlk"_s, "link 1 b.tlk\n"}, {u"b.tlk"_s, "new b\n"}}));
    EXPECT_EQ(Import({u"a.tlk"_s}).exitCode, 0);
}

TEST_F(ImportOverExistingFiles, AnEditedCopyIsLeftAndAnEditedSourceUpdatesIt)
{
    ASSERT_EQ(Import({u"a.tlk"_s, u"--collisions"_s, u"replace"_s}).exitCode, 0);
    tree.File(u"cloud/a.tlk"_s, "edited copy\n").File(u"work/b.tlk"_s, "edited source\n");
    const CommandResult result = Import({u"a.tlk"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(u"left       a.tlk -> a.tlk (the copy was changed, the source not)"_s))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(u"updated    b.tlk -> b.tlk"_s)) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(),
              (FileTree::Snapshot{{u"a.tlk"_s, "edited copy\n"}, {u"b.tlk"_s, "edited source\n"}}));
}

TEST_F(ImportOverExistingFiles, AFileEditedOnBothSidesIsAConflictThatNamesWhatChanged)
{
    ASSERT_EQ(Import({u"a.tlk"_s, u"--collisions"_s, u"replace"_s}).exitCode, 0);
    tree.File(u"work/b.tlk"_s, "edited source\n").File(u"cloud/b.tlk"_s, "edited copy\n");
    const FileTree::Snapshot before = Cloud();
    const CommandResult stopped = Import({u"a.tlk"_s});
    EXPECT_EQ(stopped.exitCode, 6);
    EXPECT_EQ(Cloud(), before);
    ASSERT_EQ(stopped.Lines().size(), 1) << ::testing::PrintToString(stopped);
    const QString line = stopped.Lines()[0];
    EXPECT_TRUE(line.startsWith(u"conflict   b.tlk -> b.tlk: both changed since the copy was made: "
                                "the source (14 bytes, "_s));
    EXPECT_TRUE(line.contains(u" and the copy (12 bytes, "_s));
    EXPECT_EQ(line.count(u"; before: 6 bytes, "_s), 2);
    EXPECT_TRUE(stopped.err.contains(u"--on-conflict keep, replace, rename or ask"_s));
    const QList<QJsonObject> json = Import({u"a.tlk"_s, u"--json"_s}).Json();
    ASSERT_EQ(json.size(), 2);
    EXPECT_EQ(json[0][u"kind"].toString(), u"both-changed"_s);
    EXPECT_EQ(json[0][u"sourceSide"][u"bytes"].toInt(), 14);
    EXPECT_EQ(json[0][u"targetSide"][u"recordedBytes"].toInt(), 6);
    EXPECT_EQ(Import({u"a.tlk"_s, u"--on-conflict"_s, u"replace"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_s), "edited source\n");
}

TEST_F(ImportOverExistingFiles, AFolderThatExistsIsNoConflict)
{
    tree.File(u"work/proj/x.tlk"_s, "x").File(u"cloud/proj/y.tlk"_s, "y");
    const CommandResult result = Import({u"proj"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Contents(u"cloud/proj"_s),
              (FileTree::Snapshot{{u"x.tlk"_s, "x"}, {u"y.tlk"_s, "y"}}));
}

TEST_F(ImportOverExistingFiles, TwoGivenFilesOfOneNameAreNamedBothAndNotCopied)
{
    tree.File(u"work/p/x.tlk"_s, "p").File(u"work/q/x.tlk"_s, "q");
    for (const QString& policy : {u"stop"_s, u"keep"_s, u"replace"_s}) {
        const CommandResult result =
            Import({u"p/x.tlk"_s, u"q/x.tlk"_s, u"--collisions"_s, policy});
        EXPECT_EQ(result.exitCode, 6) << policy.toStdString();
        EXPECT_EQ(result.Lines(),
                  QStringList{u"conflict   q/x.tlk -> x.tlk: also wanted by p/x.tlk"_s});
        EXPECT_FALSE(tree.Exists(u"cloud/x.tlk"_s));
    }
    const CommandResult result =
        Import({u"p/x.tlk"_s, u"q/x.tlk"_s, u"--collisions"_s, u"rename"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(u"renamed    q/x.tlk -> x (2).tlk"_s));
    EXPECT_EQ(tree.Read(u"cloud/x.tlk"_s), "p");
    EXPECT_EQ(tree.Read(u"cloud/x (2).tlk"_s), "q");
}

TEST_F(ImportOverExistingFiles, TwoLinkedFilesFromFoldersOfOneNameStayTwoFiles)
{
    tree.File(u"work/top.tlk"_s, "link 1 p/lib/x.tlk\nlink 2 q/lib/x.tlk\n")
        .File(u"work/p/lib/x.tlk"_s, "p")
        .File(u"work/q/lib/x.tlk"_s, "q");
    EXPECT_EQ(Import({u"top.tlk"_s}).exitCode, 6);
    EXPECT_FALSE(tree.Exists(u"cloud/top.tlk"_s));
    const CommandResult result = Import({u"top.tlk"_s, u"--linked-collisions"_s, u"rename"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/top.tlk"_s), "link 1 lib/x.tlk\nlink 2 lib/x (2).tlk\n");
    EXPECT_EQ(tree.Read(u"cloud/lib/x (2).tlk"_s), "q");
    // Known by their sources from then on.
    EXPECT_EQ(Import({u"top.tlk"_s}).exitCode, 0);
}

TEST_F(ImportOverExistingFiles, BothGivenNewNamesByOneRunGetDifferentOnes)
{
    tree.File(u"work/p/b.tlk"_s, "p").File(u"work/q/b.tlk"_s, "q");
    const CommandResult result =
        Import({u"p/b.tlk"_s, u"q/b.tlk"_s, u"--collisions"_s, u"rename"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_s), "old b\n");
    EXPECT_EQ(tree.Read(u"cloud/b (2).tlk"_s), "p");
    EXPECT_EQ(tree.Read(u"cloud/b (3).tlk"_s), "q");
}

TEST_F(ImportOverExistingFiles, ACopyThatIsInPlaceIsNotReplacedByAFileOfTheSameName)
{
    tree.File(u"work/top.tlk"_s, "link 1 p/lib/x.tlk\n").File(u"work/p/lib/x.tlk"_s, "p");
    ASSERT_EQ(Import({u"top.tlk"_s}).exitCode, 0);
    tree.File(u"work/top.tlk"_s, "link 1 p/lib/x.tlk\nlink 2 q/lib/x.tlk\n")
        .Touch(u"work/top.tlk"_s, QDateTime::currentDateTime().addSecs(60))
        .File(u"work/q/lib/x.tlk"_s, "q");
    EXPECT_EQ(Import({u"top.tlk"_s, u"--collisions"_s, u"replace"_s}).exitCode, 6);
    EXPECT_EQ(tree.Read(u"cloud/lib/x.tlk"_s), "p");
}

} // namespace Halvern::Test
