// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// What goes to which output.
class CommandOutput : public CommandFixture
{
protected:
    CommandOutput()
    {
        tree.File(u"work/a.tlk"_s, "link 1 gone.tlk\nlink 2 b.tlk\n")
            .File(u"work/b.tlk"_s, "fail\n");
    }
};

} // namespace

TEST_F(CommandOutput, InJsonIsOneObjectPerFileAndASummaryWithTheExitCode)
{
    const CommandResult result = Import({u"a.tlk"_s, u"--json"_s, u"-v"_s});
    const QList<QJsonObject> lines = result.Json();
    ASSERT_EQ(lines.size(), 4) << ::testing::PrintToString(result);
    EXPECT_EQ(lines[0][u"status"].toString(), u"copied"_s);
    EXPECT_EQ(lines[0][u"source"].toString(), tree.Path(u"work/a.tlk"_s));
    EXPECT_EQ(lines[0][u"target"].toString(), tree.Path(u"cloud/a.tlk"_s));
    EXPECT_EQ(lines[1][u"status"].toString(), u"missing"_s);
    EXPECT_EQ(lines[1][u"linkedFrom"][0].toString(), tree.Path(u"work/a.tlk"_s));
    EXPECT_EQ(lines[2][u"reason"].toString(), u"test resolver: told to fail"_s);
    EXPECT_EQ(lines[3][u"event"].toString(), u"summary"_s);
    EXPECT_EQ(lines[3][u"exitCode"].toInt(), result.exitCode);
    EXPECT_EQ(result.exitCode, 7);
}

TEST_F(CommandOutput, InJsonTellsConflictsAndErrorsToo)
{
    tree.File(u"cloud/a.tlk"_s);
    const QList<QJsonObject> conflict = Import({u"a.tlk"_s, u"--json"_s}).Json();
    ASSERT_EQ(conflict.size(), 2);
    EXPECT_EQ(conflict[0][u"event"].toString(), u"conflict"_s);
    EXPECT_EQ(conflict[0][u"kind"].toString(), u"target-taken"_s);
    EXPECT_TRUE(conflict[0][u"targetSide"][u"modified"].toString().endsWith(u'Z'));
    EXPECT_EQ(conflict[1][u"exitCode"].toInt(), 6);
    const QList<QJsonObject> error = Import({u"nope"_s, u"--json"_s}).Json();
    ASSERT_EQ(error.size(), 1);
    EXPECT_EQ(error[0][u"event"].toString(), u"error"_s);
    EXPECT_EQ(error[0][u"exitCode"].toInt(), 3);
}

TEST_F(CommandOutput, WhenQuietIsErrorsOnStandardErrorAndNothingElse)
{
    const CommandResult result = Import({u"a.tlk"_s, u"-q"_s});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.out, QString());
    EXPECT_EQ(result.err.toStdString(), "missing    gone.tlk (linked from a.tlk)\n"
                                        "copied     b.tlk -> b.tlk: test resolver: told to fail\n");
}

TEST_F(CommandOutput, WhenQuietNamesWhatDidNotComeAlong)
{
    tree.File(u"work/c.tlk"_s, "link 1 gone.tlk\n");
    const CommandResult result = Import({u"c.tlk"_s, u"-q"_s});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.out, QString());
    EXPECT_TRUE(result.err.startsWith(u"missing    gone.tlk"_s))
        << ::testing::PrintToString(result);
}

TEST_F(CommandOutput, HoldsNoLogAndNoProgressUnlessAskedFor)
{
    const CommandResult plain = Import({u"a.tlk"_s, u"-n"_s});
    EXPECT_EQ(plain.err, u"corsync: dry run; nothing was copied\n"_s);
    const CommandResult verbose = Import({u"a.tlk"_s, u"-n"_s, u"-v"_s});
    EXPECT_TRUE(verbose.err.contains(u" INFO  CorsyncFileLink Begin assigning target paths"_s));
    EXPECT_FALSE(verbose.err.contains(u" DEBUG "_s));
    EXPECT_EQ(verbose.out, plain.out);
    const CommandResult more = Import({u"a.tlk"_s, u"-n"_s, u"-vv"_s});
    EXPECT_TRUE(more.err.contains(u" DEBUG "_s));
    const CommandResult progress = Import({u"a.tlk"_s, u"--progress"_s, u"always"_s});
    EXPECT_TRUE(progress.err.contains(u"Copying 0/2 files"_s));
    EXPECT_TRUE(progress.err.endsWith(u"\r\033[K"_s));
}

// What is being made ready lies in a folder that is gone when anybody looks for it.
TEST_F(CommandOutput, NamesNoPlaceOfAnUnfinishedCopyInTheLog)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.tlk\nlink 2 ../lib/gone.tlk\n")
        .File(u"work/proj/lazy.tlk"_s, "link 1 ../lib/part.tlk\n")
        .File(u"work/lib/part.tlk"_s, "part\n");
    for (const QStringList& options : {QStringList(), QStringList{u"--isolate"_s, u"always"_s}}) {
        const CommandResult result = Import(QStringList{u"proj"_s, u"-vvv"_s} + options);
        EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
        EXPECT_TRUE(tree.Read(u"cloud/proj/lazy.tlk"_s).contains("lib/part.tlk"));
        EXPECT_FALSE(result.err.contains(u".corsync-"_s)) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(tree.Path(u"cloud/proj/lazy.tlk"_s)))
            << result.err.toStdString();
        tree.Remove(u"cloud"_s).Remove(u"sync.db"_s);
    }
}

TEST_F(CommandOutput, GoesIntoALogFileThatGrowsWithEveryRun)
{
    const QString log = tree.Path(u"work/run.log"_s);
    Import({u"a.tlk"_s, u"-n"_s, u"--log-file"_s, log});
    const QByteArray once = tree.Read(u"work/run.log"_s);
    EXPECT_TRUE(
        once.contains(" INFO  CorsyncFileLink Begin assigning target paths for file links\n"));
    EXPECT_TRUE(once.contains(" ERROR ResolverPlugin test resolver: told to fail\n"));
    EXPECT_FALSE(once.contains(" DEBUG "));
    Import({u"a.tlk"_s, u"-n"_s, u"--log-file"_s, log, u"--log-level"_s, u"error"_s});
    const QByteArray twice = tree.Read(u"work/run.log"_s);
    EXPECT_TRUE(twice.startsWith(once));
    EXPECT_GT(twice.size(), once.size());
    EXPECT_FALSE(twice.mid(once.size()).contains(" INFO "));
}

TEST_F(CommandOutput, ShowsPathsThatHoldPlaceholdersAsTheyAre)
{
    tree.File(u"work/%1/top %2.tlk"_s, "link 1 %3.tlk\nlink 2 gone %1.tlk\n")
        .File(u"work/%1/%3.tlk"_s, "fail\n")
        .File(u"cloud/Demo %2/%3.tlk"_s, "old %1\n")
        .File(u"plugins/%1 %2.syncplugin"_s, "<SyncPlugins");
    const QStringList arguments{u"%1/top %2.tlk"_s, u"--to"_s, u"Demo %2"_s};
    EXPECT_EQ(Import(arguments).Lines(),
              QStringList{u"conflict   %1/%3.tlk -> Demo %2/%3.tlk: a file stands there"_s});
    const CommandResult result = Import(arguments + QStringList{u"--collisions"_s, u"replace"_s});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.Lines().mid(0, 3),
              (QStringList{u"copied     %1/top %2.tlk -> Demo %2/top %2.tlk"_s,
                           u"replaced   %1/%3.tlk -> Demo %2/%3.tlk: test resolver: told to fail"_s,
                           u"missing    %1/gone %1.tlk (linked from %1/top %2.tlk)"_s}))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(result.err.contains(u"plugins/%1 %2.syncplugin: "_s))
        << ::testing::PrintToString(result);
    const CommandResult error = Import({u"%1/no %2.tlk"_s, u"--to"_s, u"%3"_s});
    EXPECT_EQ(error.err, u"corsync: no such file or folder: %1/no %2.tlk\n"_s);
    EXPECT_EQ(Import({u"%1"_s, u"--to"_s, u"../%2 %1"_s}).err,
              u"corsync: --to ../%2 %1 does not lie in the cloud cache folder "_s +
                  tree.Path(u"cloud"_s) + u'\n');
}

TEST_F(CommandOutput, OfHelpAndVersionIsReadableWithoutAnyFolder)
{
    EXPECT_EQ(Run({u"--version"_s}).out.left(8), u"corsync "_s);
    EXPECT_TRUE(Run({u"--help"_s}).out.contains(u"corsync import project --to Demo"_s));
    const CommandResult wrong = Run({u"import"_s, u"--nope"_s});
    EXPECT_EQ(wrong.exitCode, 2);
    EXPECT_EQ(wrong.out, QString());
}

TEST_F(CommandOutput, AMistakeInTheArgumentsIsJsonAsWellWhenJsonIsAskedFor)
{
    const CommandResult result = Run({u"import"_s, u"--json"_s, u"--nonsense"_s});
    EXPECT_EQ(result.exitCode, 2);
    const QList<QJsonObject> objects = result.Json();
    ASSERT_EQ(objects.size(), 1);
    EXPECT_EQ(objects[0][u"event"].toString(), u"error"_s);
    EXPECT_EQ(objects[0][u"exitCode"].toInt(), 2);
    EXPECT_TRUE(result.err.startsWith(objects[0][u"text"].toString()))
        << ::testing::PrintToString(result);
}

} // namespace Halvern::Test
