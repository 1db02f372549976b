// SPDX-License-Identifier: Apache-2.0

#include "HostilePlugin.h"

#include <QtCore/QElapsedTimer>

namespace Halvern::Test {

namespace {

/// The line about a file; empty when there is none.
QString LineAbout(const CommandResult& result, const QString& file)
{
    for (const QString& line : result.Lines())
        if (line.contains(file))
            return line;
    return {};
}

} // namespace

TEST_F(HostilePlugin, ThatEndsItsProcessFailsForThatFileAlone)
{
    const CommandResult result = ImportWith("exit 0");
    EXPECT_EQ(result.exitCode, 7) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.out.contains(u"The plug-in ended its process with exit code 0"_s))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(LineAbout(result, u"b.talk"_s).startsWith(u"copied"_s))
        << ::testing::PrintToString(result);
}

TEST_F(HostilePlugin, ThatCrashesFailsForThatFileAlone)
{
    const CommandResult result = ImportWith("crash");
    EXPECT_EQ(result.exitCode, 7) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.out.contains(u"The plug-in crashed ("_s) ||
                result.out.contains(u"The plug-in ended its process"_s))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(LineAbout(result, u"b.talk"_s).startsWith(u"copied"_s))
        << ::testing::PrintToString(result);
}

TEST_F(HostilePlugin, ThatNeverReturnsIsEndedAfterTheTimeThatItMayTake)
{
    timeLimit = 1;
    QElapsedTimer timer;
    timer.start();
    const CommandResult result = ImportWith("loop");
    EXPECT_LT(timer.elapsed(), 60'000);
    EXPECT_EQ(result.exitCode, 7) << ::testing::PrintToString(result);
    EXPECT_TRUE(
        result.out.contains(u"The plug-in took longer than the 1 seconds that it may take"_s))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(LineAbout(result, u"b.talk"_s).startsWith(u"copied"_s))
        << ::testing::PrintToString(result);
}

TEST_F(HostilePlugin, ThatNeverReturnsThreeTimesIsNotAskedAgain)
{
    timeLimit = 1;
    for (const QString& name : {u"c"_s, u"d"_s, u"e"_s, u"f"_s})
        tree.File(u"work/%1.talk"_s.arg(name), "loop");
    const CommandResult result =
        ImportWith("loop", {u"c.talk"_s, u"d.talk"_s, u"e.talk"_s, u"f.talk"_s});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.out.contains(u"took too long 3 times and is not asked again"_s))
        << ::testing::PrintToString(result);
}

TEST_F(HostilePlugin, ThatThrowsIsToldAsInOneProcess)
{
    const CommandResult apart = ImportWith("throw stones");
    EXPECT_TRUE(apart.out.contains(u"threw an exception in GetFileLinks: stones"_s))
        << ::testing::PrintToString(apart);
    const CommandResult together =
        ImportWith("throw stones", {u"--isolate"_s, u"never"_s, u"--collisions"_s, u"keep"_s});
    EXPECT_TRUE(together.out.contains(u"threw an exception in GetFileLinks: stones"_s))
        << ::testing::PrintToString(together);
}

TEST_F(HostilePlugin, IsHeardInTheLogOnly)
{
    const CommandResult quiet = ImportWith("hello");
    EXPECT_EQ(quiet.exitCode, 0) << ::testing::PrintToString(quiet);
    EXPECT_FALSE(quiet.out.contains(u"cout: hello"_s)) << ::testing::PrintToString(quiet);
    EXPECT_FALSE(quiet.err.contains(u"cout: hello"_s)) << ::testing::PrintToString(quiet);
    const CommandResult verbose = ImportWith("hello", {u"-v"_s, u"--reread"_s});
    for (const QString& said : {u"printed: cout: hello"_s, u"printed: cerr: hello"_s})
        EXPECT_TRUE(verbose.err.contains(said)) << ::testing::PrintToString(verbose);
}

TEST_F(HostilePlugin, InTheSameProcessEndsTheCommandWithACodeAndALineThatSaySo)
{
    const CommandResult result = ImportWith("exit 0", {u"--isolate"_s, u"never"_s});
    EXPECT_EQ(result.exitCode, 7) << ::testing::PrintToString(result);
    EXPECT_TRUE(
        result.err.contains(u"corsync: a plug-in ended the program before the work was done"_s))
        << ::testing::PrintToString(result);
}

TEST_F(HostilePlugin, TheSettingsSayWhichPluginsRunApart)
{
    tree.File(u"work/a.talk"_s, "harmless");
    tree.File(u"bad.ini"_s, "[General]\nisolatePlugins=sometimes\n");
    const CommandResult result =
        Run({u"import"_s, u"a.talk"_s, u"--settings"_s, tree.Path(u"bad.ini"_s)});
    EXPECT_EQ(result.exitCode, 2) << ::testing::PrintToString(result);
    EXPECT_TRUE(
        result.err.contains(u"isolatePlugins must be auto, always or never, not sometimes"_s))
        << ::testing::PrintToString(result);
}

TEST_F(HostilePlugin, PluginsThatCannotBeUsedApartSayWhy)
{
    tree.File(u"plugins/broken.syncplugin"_s,
              Registration(u"broken.so"_s, u"FileLinkResolver"_s, u"brk"_s));
    tree.File(u"plugins/broken.so"_s, "no library");
    const CommandResult result = Run(QStringList{u"plugins"_s} + PluginArguments());
    EXPECT_EQ(result.exitCode, 7) << ::testing::PrintToString(result);
    EXPECT_TRUE(LineAbout(result, u"broken.so"_s).startsWith(u"failed"_s))
        << ::testing::PrintToString(result);
}

} // namespace Halvern::Test
