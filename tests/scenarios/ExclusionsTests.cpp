// SPDX-License-Identifier: Apache-2.0

// What patterns exclude is not imported, and -v says which pattern it was.

#include "ScenarioFixture.h"

#include <QtCore/QRegularExpression>

namespace Halvern::Test {

namespace {

class Exclusions : public ScenarioFixture
{
protected:
    Exclusions()
    {
        for (const QString& name : {u"a.txt"_s, u"b.bak"_s, u"sub/c.bak"_s, u"sub/keep.bak"_s,
                                    u"out/big.txt"_s, u"sub/out/deep.txt"_s})
            tree.File(u"work/proj/"_s + name, name.toUtf8());
    }
    QStringList Imported(const QStringList& options = {})
    {
        if (tree.Exists(u"cloud"_s))
            tree.Remove(u"cloud"_s);
        const ImportReport report = Report(QStringList{u"proj"_s} + options);
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        return tree.Contents(u"cloud/proj"_s).keys().filter(QRegularExpression(u"[^/]$"_s));
    }
};

} // namespace

TEST_F(Exclusions, OfTheCommandLineFollowTheRulesOfGitignore)
{
    struct Row
    {
        QStringList patterns;
        QStringList imported;
    };
    const QList<Row> rows = {
        {{u"*.bak"_s}, {u"a.txt"_s, u"out/big.txt"_s, u"sub/out/deep.txt"_s}},
        {{u"*.bak"_s, u"!keep.bak"_s},
         {u"a.txt"_s, u"out/big.txt"_s, u"sub/keep.bak"_s, u"sub/out/deep.txt"_s}},
        {{u"out/"_s}, {u"a.txt"_s, u"b.bak"_s, u"sub/c.bak"_s, u"sub/keep.bak"_s}},
        {{u"/out/"_s},
         {u"a.txt"_s, u"b.bak"_s, u"sub/c.bak"_s, u"sub/keep.bak"_s, u"sub/out/deep.txt"_s}},
        {{u"sub/**"_s}, {u"a.txt"_s, u"b.bak"_s, u"out/big.txt"_s}},
        {{u"**/out"_s}, {u"a.txt"_s, u"b.bak"_s, u"sub/c.bak"_s, u"sub/keep.bak"_s}},
        {{u"[ab].*"_s},
         {u"out/big.txt"_s, u"sub/c.bak"_s, u"sub/keep.bak"_s, u"sub/out/deep.txt"_s}},
        {{u"?.txt"_s},
         {u"b.bak"_s, u"out/big.txt"_s, u"sub/c.bak"_s, u"sub/keep.bak"_s, u"sub/out/deep.txt"_s}},
        {{u"sub/*.bak"_s}, {u"a.txt"_s, u"b.bak"_s, u"out/big.txt"_s, u"sub/out/deep.txt"_s}},
    };
    for (const Row& row : rows) {
        QStringList options;
        for (const QString& pattern : row.patterns)
            options += {u"--exclude"_s, pattern};
        EXPECT_EQ(Imported(options), row.imported) << row.patterns.join(u' ').toStdString();
    }
}

TEST_F(Exclusions, OfAFileInASourceFolderHoldBelowItAndCommentsDoNot)
{
    tree.File(u"work/proj/.corsyncignore"_s, "# backups\n*.bak\n\n!keep.bak\n");
    const QStringList imported = Imported();
    EXPECT_FALSE(imported.contains(u"b.bak"_s));
    EXPECT_FALSE(imported.contains(u"sub/c.bak"_s));
    EXPECT_TRUE(imported.contains(u"sub/keep.bak"_s));
    EXPECT_TRUE(imported.contains(u"a.txt"_s));
}

TEST_F(Exclusions, OfAFileInAFolderBelowHoldOnlyThere)
{
    tree.File(u"work/proj/sub/.corsyncignore"_s, "*.bak\n");
    const QStringList imported = Imported();
    EXPECT_TRUE(imported.contains(u"b.bak"_s));
    EXPECT_FALSE(imported.contains(u"sub/c.bak"_s));
}

TEST_F(Exclusions, OfLockAndBackupFilesAreBuiltIn)
{
    for (const QString& name : {u".git/config"_s, u"sub/.git/HEAD"_s, u"m.FCStd1"_s, u"m.blend1"_s,
                                u"m.blend2"_s, u"~$sheet.xlsx"_s, u".~lock.sheet.ods#"_s})
        tree.File(u"work/proj/"_s + name);
    EXPECT_EQ(Imported(), (QStringList{u"a.txt"_s, u"b.bak"_s, u"out/big.txt"_s, u"sub/c.bak"_s,
                                       u"sub/keep.bak"_s, u"sub/out/deep.txt"_s}));
}

TEST_F(Exclusions, AreShownAsSkippedWithTheirPatternWhenAskedFor)
{
    tree.File(u"work/proj/m.blend1"_s);
    const CommandResult verbose = Import({u"proj"_s, u"--exclude"_s, u"b.*"_s, u"-v"_s});
    const QStringList skipped = (verbose.out + verbose.err).split(u'\n').filter(u"skipped "_s);
    EXPECT_EQ(skipped.filter(u"b.bak"_s).filter(u"b.*"_s).size(), 1)
        << ::testing::PrintToString(verbose);
    EXPECT_EQ(skipped.filter(u"m.blend1"_s).size(), 1) << ::testing::PrintToString(verbose);
}

TEST_F(Exclusions, OfWhatCorsyncKeepsForItselfNeedNoPattern)
{
    tree.File(u"work/own/a.txt"_s, "new").File(u"cloud/own/a.txt"_s, "old");
    for (int run = 0; run < 2; ++run) {
        const CommandResult result =
            Run({u"import"_s, u"own"_s, u"--cloud-folder"_s, tree.Path(u"cloud"_s), u"--database"_s,
                 tree.Path(u"work/own/sync.db"_s), u"--collisions"_s, u"replace"_s});
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        EXPECT_TRUE(tree.Exists(u"work/own/sync.db.base"_s));
        EXPECT_EQ(tree.Contents(u"cloud/own"_s), (FileTree::Snapshot{{u"a.txt"_s, "new"}}));
    }
}

TEST_F(Exclusions, OfALinkedFileAreShownOnce)
{
    Design(u"work/proj/top.gltf"_s, {u"b.bak"_s, u"out/big.txt"_s});
    const QStringList arguments{u"proj"_s, u"--exclude"_s, u"*.bak"_s, u"--exclude"_s, u"/out/"_s};
    const CommandResult verbose = Import(arguments + QStringList{u"-v"_s});
    const QStringList skipped = verbose.Lines().filter(u"skipped "_s);
    EXPECT_EQ(skipped.filter(u"b.bak"_s).size(), 1) << ::testing::PrintToString(verbose);
    const ImportReport report = Report(arguments + QStringList{u"--dry-run"_s});
    EXPECT_EQ(report.Lines().filter(u"proj/b.bak"_s).size(), 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Lines().filter(u"out/big.txt"_s).size(), 1);
}

TEST_F(Exclusions, KeepWhatAMoveWouldDelete)
{
    ASSERT_EQ(Report({u"proj"_s, u"--move"_s, u"--exclude"_s, u"*.bak"_s}).exitCode, 0);
    EXPECT_EQ(tree.Contents(u"work/proj"_s).keys().filter(u".bak"_s),
              (QStringList{u"b.bak"_s, u"sub/c.bak"_s, u"sub/keep.bak"_s}));
}

TEST_F(Exclusions, OfWhatWasImportedBeforeLeaveTheCopy)
{
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    ASSERT_EQ(Report({u"proj"_s, u"--exclude"_s, u"*.bak"_s}).exitCode, 0);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(Exclusions, AFileThatIsGivenByItsNameIsNotExcludedByABuiltInPattern)
{
    tree.File(u"work/m.blend1"_s, "backup");
    const ImportReport report = Report({u"m.blend1"_s});
    // Whatever is decided, nobody may be told "complete" without the file.
    EXPECT_TRUE(tree.Exists(u"cloud/m.blend1"_s) || report.exitCode != 0 ||
                report.StatusOf(u"work/m.blend1"_s) == u"skipped"_s)
        << ::testing::PrintToString(report);
}

TEST_F(Exclusions, APatternThatCanMatchNothingIsAUsageErrorThatNamesIt)
{
    for (const QString& pattern : {u"[abc"_s, u""_s, u"!"_s, u"/"_s, u"!/"_s, u"a//b"_s, u"a\\"_s,
                                   u"./out"_s, u"../out"_s, u"[[:none:]]"_s, u"[z-a]"_s, u"  "_s}) {
        const CommandResult result =
            Import({u"proj"_s, u"--exclude"_s, u"*.bak"_s, u"--exclude"_s, pattern});
        EXPECT_EQ(result.exitCode, 2) << pattern.toStdString();
        EXPECT_EQ(result.err, u"corsync: the pattern \"%1\" can match nothing\n"_s.arg(pattern));
        EXPECT_FALSE(tree.Exists(u"cloud/proj"_s));
    }
    for (const QString& pattern :
         {u"*"_s, u"**"_s, u"**/"_s, u".*"_s, u"..a"_s, u"[a]"_s, u"\\!a"_s})
        EXPECT_EQ(Import({u"proj"_s, u"-n"_s, u"--exclude"_s, pattern}).exitCode, 0)
            << pattern.toStdString();
}

TEST_F(Exclusions, OfAFileThatHoldsNoPatternOnALineNothingOfItsFolderIsTaken)
{
    tree.File(u"work/proj/sub/.corsyncignore"_s, "# comment\n\n*.bak\n[abc\n");
    for (const QStringList& options : {QStringList(), QStringList{u"--move"_s}}) {
        const ImportReport report = Report(QStringList{u"proj"_s} + options);
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/proj/sub/.corsyncignore"_s), u"failed"_s);
        EXPECT_EQ(report.Of(u"work/proj/sub/.corsyncignore"_s).reason,
                  u"it could not be read: line 4: the pattern \"[abc\" can match nothing; nothing "
                  "of its folder is imported"_s);
        EXPECT_EQ(tree.Contents(u"cloud/proj"_s).keys().filter(u"sub/"_s), QStringList{u"sub/"_s});
        EXPECT_TRUE(tree.Exists(u"work/proj/sub/c.bak"_s));
    }
}

TEST_F(Exclusions, OfAFileThatHoldsNoPatternNothingOfItsFolderComesByALinkEither)
{
    tree.File(u"work/proj/sub/.corsyncignore"_s, "[abc\n").File(u"work/proj/sub/secret.bin"_s);
    Design(u"work/proj/top.gltf"_s, {u"sub/secret.bin"_s});
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/sub/secret.bin"_s), u"skipped"_s);
    EXPECT_FALSE(tree.Exists(u"cloud/proj/sub/secret.bin"_s));
}

TEST_F(Exclusions, WhatIsGivenByItsNameIsTakenThoughItsFolderIsGivenToo)
{
    tree.File(u"work/proj/m.blend1"_s)
        .File(u"work/proj/n.blend1"_s)
        .File(u"work/proj/.git/config"_s)
        .File(u"work/proj/.git/HEAD"_s)
        .File(u"work/proj/.git/hooks/pre"_s);
    for (int run = 0; run < 2; ++run) {
        const ImportReport report =
            Report({u"proj"_s, u"proj/m.blend1"_s, u"proj/b.bak"_s, u"proj/.git/config"_s,
                    u"proj/.git/hooks"_s, u"--exclude"_s, u"*.bak"_s});
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/proj/n.blend1"_s), u"skipped"_s);
        EXPECT_EQ(tree.Contents(u"cloud"_s).keys(),
                  (QStringList{u"proj/.git/config"_s, u"proj/.git/hooks/pre"_s, u"proj/a.txt"_s,
                               u"proj/b.bak"_s, u"proj/m.blend1"_s, u"proj/out/big.txt"_s,
                               u"proj/sub/out/deep.txt"_s}));
    }
}

TEST_F(Exclusions, WhatIsGivenByItsNameIsMovedAndNothingElseOfItsFolder)
{
    tree.File(u"work/proj/.git/config"_s).File(u"work/proj/.git/HEAD"_s);
    EXPECT_EQ(Report({u"proj"_s, u"proj/.git/config"_s, u"--move"_s}).exitCode, 0);
    EXPECT_EQ(tree.Contents(u"work/proj"_s).keys(), QStringList{u".git/HEAD"_s});
    EXPECT_TRUE(tree.Exists(u"cloud/proj/.git/config"_s));
}

} // namespace Halvern::Test
