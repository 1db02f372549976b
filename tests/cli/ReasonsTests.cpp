// SPDX-License-Identifier: Apache-2.0

#include "Reasons.h"

#include "FileTree.h"

#include <gtest/gtest.h>

using namespace Halvern::Cli;

namespace {

constexpr int Error = 40000;

LogRecord Module(const QString& text)
{
    return {Error, LogOrigin::Module, text};
}

} // namespace

TEST(LogReasons, BelongToEveryPathTheyName)
{
    const LogRecord record =
        Module(u"Failed to copy file /s/a b.prt to /t/a b.prt. Error: full"_qs);
    const Reasons reasons({record}, {u"/s/a b.prt"_qs, u"/t/a b.prt"_qs, u"/s/other"_qs});
    ASSERT_EQ(reasons.For(u"/s/a b.prt"_qs).size(), 1);
    EXPECT_EQ(reasons.For(u"/s/a b.prt"_qs)[0].text, record.text);
    EXPECT_EQ(reasons.For(u"/t/a b.prt"_qs).size(), 1);
    EXPECT_TRUE(reasons.For(u"/s/other"_qs).isEmpty());
    EXPECT_TRUE(reasons.General().isEmpty());
}

TEST(LogReasons, OfAPathThatBeginsWithAnotherGoToTheLongerOne)
{
    const Reasons reasons({Module(u"Failed to read /s/a.prt 2. Error: x"_qs)},
                          {u"/s/a.prt"_qs, u"/s/a.prt 2"_qs});
    EXPECT_TRUE(reasons.For(u"/s/a.prt"_qs).isEmpty());
    EXPECT_EQ(reasons.For(u"/s/a.prt 2"_qs).size(), 1);
}

TEST(LogReasons, AreFoundForWindowsPathsAndInQuotes)
{
    const Reasons reasons({Module(u"Cannot open \"C:/s/a.prt\": denied"_qs)}, {u"C:/s/a.prt"_qs});
    EXPECT_EQ(reasons.For(u"C:/s/a.prt"_qs).size(), 1);
}

TEST(LogReasons, OfAPluginThatNamesNoFileComeWithTheRecordThatDoes)
{
    const QList<LogRecord> records = {
        {Error, LogOrigin::Plugin, u"line 3: a comma too many"_qs},
        {Error, LogOrigin::PluginManager, u"Failed to get file links from file /s/a.gltf"_qs}};
    const Reasons reasons(records, {u"/s/a.gltf"_qs});
    EXPECT_EQ(Reasons::Join(reasons.For(u"/s/a.gltf"_qs)), u"line 3: a comma too many"_qs);
    EXPECT_TRUE(reasons.General().isEmpty());
}

TEST(LogReasons, ThatNameNoFileAreGeneralAndToldOnce)
{
    const LogRecord load{Error, LogOrigin::PluginManager, u"Failed to load plugin x.so."_qs};
    const Reasons reasons({load, load, Module(u"Something else"_qs)}, {u"/s/a.gltf"_qs});
    ASSERT_EQ(reasons.General().size(), 2);
    EXPECT_EQ(reasons.General()[0].text, u"Something else"_qs);
    EXPECT_EQ(reasons.General()[1].text, load.text);
}

TEST(LogReasons, LeaveWarningsOutButKeepReadOnlyTargets)
{
    const Reasons reasons(
        {{30000, LogOrigin::Module, u"File link: Path: /s/a.prt (File not found)"_qs},
         {20000, LogOrigin::Module, u"Copy skipped for file /s/b.prt."_qs}},
        {u"/s/a.prt"_qs, u"/s/b.prt"_qs});
    EXPECT_TRUE(reasons.For(u"/s/a.prt"_qs).isEmpty());
    EXPECT_EQ(reasons.For(u"/s/b.prt"_qs).size(), 1);
}
