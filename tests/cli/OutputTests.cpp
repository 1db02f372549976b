// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

namespace Halvern::Test {

namespace {

/// What goes to which output.
class CommandOutput : public CommandFixture
{
protected:
    CommandOutput()
    {
        tree.File(u"work/a.tlk"_qs, "link 1 gone.tlk\nlink 2 b.tlk\n")
            .File(u"work/b.tlk"_qs, "fail\n");
    }
};

} // namespace

TEST_F(CommandOutput, InJsonIsOneObjectPerFileAndASummaryWithTheExitCode)
{
    const CommandResult result = Import({u"a.tlk"_qs, u"--json"_qs, u"-v"_qs});
    const QList<QJsonObject> lines = result.Json();
    ASSERT_EQ(lines.size(), 4) << ::testing::PrintToString(result);
    EXPECT_EQ(lines[0][u"status"].toString(), u"copied"_qs);
    EXPECT_EQ(lines[0][u"source"].toString(), tree.Path(u"work/a.tlk"_qs));
    EXPECT_EQ(lines[0][u"target"].toString(), tree.Path(u"cloud/a.tlk"_qs));
    EXPECT_EQ(lines[1][u"status"].toString(), u"missing"_qs);
    EXPECT_EQ(lines[1][u"linkedFrom"][0].toString(), tree.Path(u"work/a.tlk"_qs));
    EXPECT_EQ(lines[2][u"reason"].toString(), u"test resolver: told to fail"_qs);
    EXPECT_EQ(lines[3][u"event"].toString(), u"summary"_qs);
    EXPECT_EQ(lines[3][u"exitCode"].toInt(), result.exitCode);
    EXPECT_EQ(result.exitCode, 7);
}

TEST_F(CommandOutput, InJsonTellsConflictsAndErrorsToo)
{
    tree.File(u"cloud/a.tlk"_qs);
    const QList<QJsonObject> conflict = Import({u"a.tlk"_qs, u"--json"_qs}).Json();
    ASSERT_EQ(conflict.size(), 2);
    EXPECT_EQ(conflict[0][u"event"].toString(), u"conflict"_qs);
    EXPECT_EQ(conflict[0][u"kind"].toString(), u"target-taken"_qs);
    EXPECT_EQ(conflict[1][u"exitCode"].toInt(), 6);
    const QList<QJsonObject> error = Import({u"nope"_qs, u"--json"_qs}).Json();
    ASSERT_EQ(error.size(), 1);
    EXPECT_EQ(error[0][u"event"].toString(), u"error"_qs);
    EXPECT_EQ(error[0][u"exitCode"].toInt(), 3);
}

TEST_F(CommandOutput, WhenQuietIsErrorsOnStandardErrorAndNothingElse)
{
    const CommandResult result = Import({u"a.tlk"_qs, u"-q"_qs});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.out, QString());
    EXPECT_EQ(result.err, u"copied     b.tlk -> b.tlk: test resolver: told to fail\n"_qs);
}

TEST_F(CommandOutput, HoldsNoLogAndNoProgressUnlessAskedFor)
{
    const CommandResult plain = Import({u"a.tlk"_qs, u"-n"_qs});
    EXPECT_EQ(plain.err, u"corsync: dry run; nothing was copied\n"_qs);
    const CommandResult verbose = Import({u"a.tlk"_qs, u"-n"_qs, u"-v"_qs});
    EXPECT_TRUE(verbose.err.contains(u" INFO  CorsyncFileLink Begin extracting file links"_qs));
    EXPECT_FALSE(verbose.err.contains(u" DEBUG "_qs));
    EXPECT_EQ(verbose.out, plain.out);
    const CommandResult more = Import({u"a.tlk"_qs, u"-n"_qs, u"-vv"_qs});
    EXPECT_TRUE(more.err.contains(u" DEBUG "_qs));
    const CommandResult progress = Import({u"a.tlk"_qs, u"--progress"_qs, u"always"_qs});
    EXPECT_TRUE(progress.err.contains(u"Copying 0/2 files"_qs));
    EXPECT_TRUE(progress.err.endsWith(u"\r\033[K"_qs));
}

TEST_F(CommandOutput, GoesIntoALogFileThatGrowsWithEveryRun)
{
    const QString log = tree.Path(u"work/run.log"_qs);
    Import({u"a.tlk"_qs, u"-n"_qs, u"--log-file"_qs, log});
    const QByteArray once = tree.Read(u"work/run.log"_qs);
    EXPECT_TRUE(once.contains(" INFO  CorsyncFileLink Begin extracting file links\n"));
    EXPECT_TRUE(once.contains(" ERROR ResolverPlugin test resolver: told to fail\n"));
    EXPECT_FALSE(once.contains(" DEBUG "));
    Import({u"a.tlk"_qs, u"-n"_qs, u"--log-file"_qs, log, u"--log-level"_qs, u"error"_qs});
    const QByteArray twice = tree.Read(u"work/run.log"_qs);
    EXPECT_TRUE(twice.startsWith(once));
    EXPECT_GT(twice.size(), once.size());
    EXPECT_FALSE(twice.mid(once.size()).contains(" INFO "));
}

TEST_F(CommandOutput, ShowsPathsThatHoldPlaceholdersAsTheyAre)
{
    tree.File(u"work/%1/top %2.tlk"_qs, "link 1 %3.tlk\nlink 2 gone %1.tlk\nnorepath\n")
        .File(u"work/%1/%3.tlk"_qs, "fail\n")
        .File(u"cloud/Demo %2/%3.tlk"_qs, "old %1\n")
        .File(u"plugins/%1 %2.syncplugin"_qs, "<SyncPlugins");
    const QStringList arguments{u"%1/top %2.tlk"_qs, u"--to"_qs, u"Demo %2"_qs};
    EXPECT_EQ(Import(arguments).Lines(),
              QStringList{u"conflict   %1/%3.tlk -> Demo %2/%3.tlk: a file stands there"_qs});
    const CommandResult result = Import(arguments + QStringList{u"--collisions"_qs, u"replace"_qs});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(
        result.Lines().mid(0, 3),
        (QStringList{
            u"copied     %1/top %2.tlk -> Demo %2/top %2.tlk: test resolver: told not to repath"_qs,
            u"replaced   %1/%3.tlk -> Demo %2/%3.tlk: test resolver: told to fail"_qs,
            u"missing    %1/gone %1.tlk (linked from %1/top %2.tlk)"_qs}))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(result.err.contains(u"plugins/%1 %2.syncplugin: "_qs))
        << ::testing::PrintToString(result);
    const CommandResult error = Import({u"%1/no %2.tlk"_qs, u"--to"_qs, u"%3"_qs});
    EXPECT_EQ(error.err, u"corsync: no such file or folder: %1/no %2.tlk\n"_qs);
    EXPECT_EQ(Import({u"%1"_qs, u"--to"_qs, u"../%2 %1"_qs}).err,
              u"corsync: --to ../%2 %1 does not lie in the cloud cache folder "_qs +
                  tree.Path(u"cloud"_qs) + u'\n');
}

TEST_F(CommandOutput, OfHelpAndVersionIsReadableWithoutAnyFolder)
{
    EXPECT_EQ(Run({u"--version"_qs}).out.left(8), u"corsync "_qs);
    EXPECT_TRUE(Run({u"--help"_qs}).out.contains(u"corsync import project --to Demo"_qs));
    const CommandResult wrong = Run({u"import"_qs, u"--nope"_qs});
    EXPECT_EQ(wrong.exitCode, 2);
    EXPECT_EQ(wrong.out, QString());
}

} // namespace Halvern::Test
