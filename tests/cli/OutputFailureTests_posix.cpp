// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <fcntl.h>
#include <unistd.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// The command with outputs that take nothing.
class BrokenOutput : public CommandFixture
{
protected:
    using Child = std::function<void()>;

    BrokenOutput() { tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n").File(u"work/b.tlk"_s, "b\n"); }

    CommandResult RunWith(const Child& child, const QStringList& arguments) const
    {
        QProcess process;
        Prepare(process, arguments);
        process.setChildProcessModifier(child);
        process.start();
        return Finish(process);
    }

    /// A pipe whose reader is gone, as after `| head -1`.
    static Child WithoutReader()
    {
        return [] {
            int ends[2];
            if (pipe(ends) != 0)
                _exit(126);
            close(ends[0]);
            dup2(ends[1], STDOUT_FILENO);
            close(ends[1]);
        };
    }

    static Child OnFullDisk()
    {
        return [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); };
    }

    static Child Closed(const QList<int>& descriptors)
    {
        return [descriptors] {
            for (const int descriptor : descriptors)
                close(descriptor);
        };
    }

    /// The import is complete and recorded: the next one has nothing to do.
    void ExpectImported()
    {
        EXPECT_EQ(Cloud(),
                  (FileTree::Snapshot{{u"a.tlk"_s, "link 1 b.tlk\n"}, {u"b.tlk"_s, "b\n"}}));
        const CommandResult next = Import({u"a.tlk"_s});
        EXPECT_EQ(next.exitCode, 0) << ::testing::PrintToString(next);
        EXPECT_TRUE(next.Has(u"unchanged  a.tlk -> a.tlk"_s)) << ::testing::PrintToString(next);
        tree.Remove(u"cloud"_s).Remove(u"sync.db"_s);
    }
};

} // namespace

TEST_F(BrokenOutput, OnAFullDiskIsAFailureAndTheImportIsDone)
{
    const CommandResult result = RunWith(OnFullDisk(), ImportArguments({u"a.tlk"_s}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, u"corsync: not everything could be written to standard output: "
                          "No space left on device\n"_s);
    ExpectImported();
}

TEST_F(BrokenOutput, WithoutAReaderIsAFailureAndTheImportIsDone)
{
    const CommandResult result = RunWith(WithoutReader(), ImportArguments({u"a.tlk"_s}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"Broken pipe"_s)) << ::testing::PrintToString(result);
    ExpectImported();
}

TEST_F(BrokenOutput, ThatIsClosedIsAFailureAndNoFileGetsItsPlace)
{
    for (const QList<int>& closed : {QList<int>{1}, QList<int>{0, 1}, QList<int>{0, 1, 2}}) {
        const CommandResult result =
            RunWith(Closed(closed), ImportArguments({u"a.tlk"_s, u"-v"_s}));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err.contains(u"standard output: it is closed"_s), !closed.contains(2));
        ExpectImported();
    }
}

TEST_F(BrokenOutput, ThatIsClosedLetsNoPluginPrintIntoAFile)
{
    RegisterTestTalker(tree, u"plugins"_s);
    tree.File(u"work/a.tlk"_s, "link 1 b.talk\n").File(u"work/b.talk"_s, "words\n");
    for (const QList<int>& closed : {QList<int>{2}, QList<int>{0, 2}, QList<int>{0, 1, 2}}) {
        RunWith(Closed(closed), ImportArguments({u"a.tlk"_s, u"--isolate"_s, u"never"_s,
                                                 u"--log-file"_s, u"log"_s}));
        for (const QString& file : {u"sync.db"_s, u"cloud/b.talk"_s, u"work/log"_s})
            EXPECT_FALSE(tree.Read(file).contains("cerr: ")) << file.toStdString();
        EXPECT_EQ(Import({u"a.tlk"_s}).exitCode, 0);
        tree.Remove(u"cloud"_s).Remove(u"sync.db"_s).Remove(u"work/log"_s);
    }
}

TEST_F(BrokenOutput, IsAFailureForEveryCommandAndForHelp)
{
    const QList<QStringList> commands = {
        {u"--help"_s},  {u"--version"_s},         {u"import"_s, u"--help"_s},
        {u"plugins"_s}, {u"links"_s, u"a.tlk"_s}, {u"links"_s, u"a.tlk"_s, u"--json"_s}};
    for (const QStringList& arguments : commands)
        for (const Child& child : {OnFullDisk(), WithoutReader(), Closed({1})}) {
            const CommandResult result = RunWith(child, arguments);
            EXPECT_EQ(result.exitCode, 1) << arguments.join(u' ').toStdString();
            EXPECT_TRUE(result.err.contains(u"standard output"_s))
                << ::testing::PrintToString(result);
        }
}

TEST_F(BrokenOutput, IsNoneWhenNothingIsToBeWritten)
{
    EXPECT_EQ(RunWith(Closed({1}), ImportArguments({u"a.tlk"_s, u"-q"_s})).exitCode, 0);
    EXPECT_EQ(RunWith(OnFullDisk(), {u"import"_s}).exitCode, 2);
}

TEST_F(BrokenOutput, DoesNotHideWhatIsWorse)
{
    tree.File(u"work/a.tlk"_s, "fail\n");
    EXPECT_EQ(RunWith(OnFullDisk(), ImportArguments({u"a.tlk"_s})).exitCode, 7);
}

TEST_F(BrokenOutput, ForMessagesChangesNothing)
{
    for (const Child& child : {Closed({2}), Closed({0, 2})}) {
        const CommandResult result =
            RunWith(child, ImportArguments({u"a.tlk"_s, u"-vvv"_s, u"--progress"_s, u"always"_s}));
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        EXPECT_TRUE(result.Has(u"copied     a.tlk -> a.tlk"_s)) << ::testing::PrintToString(result);
        ExpectImported();
    }
}

} // namespace Halvern::Test
