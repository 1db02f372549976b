// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// A plug-in that prints, in the same process.
class TalkingPlugin : public CommandFixture
{
protected:
    TalkingPlugin()
    {
        RegisterTestTalker(tree, u"plugins"_s);
        tree.File(u"work/a.talk"_s, "{\"event\":\"forged\"}\nsystem echo from a child\n");
    }

    CommandResult Links(const QStringList& arguments) const
    {
        return Run(QStringList{u"links"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s),
                               u"--plugin-path"_s, TestPluginFolder(), u"--isolate"_s, u"never"_s,
                               u"a.talk"_s} +
                   arguments);
    }
};

} // namespace

TEST_F(TalkingPlugin, CannotSpoilJson)
{
    const CommandResult result = Links({u"--json"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    ASSERT_EQ(result.Json().size(), 1);
    EXPECT_EQ(result.Json()[0][u"event"].toString(), u"summary"_s);
    const QList<QJsonObject> import = Import({u"a.talk"_s, u"--json"_s}).Json();
    ASSERT_EQ(import.size(), 2);
    EXPECT_EQ(import[0][u"status"].toString(), u"copied"_s);
}

TEST_F(TalkingPlugin, CannotSpoilTheResults)
{
    const CommandResult result = Links({});
    EXPECT_EQ(result.out, tree.Path(u"work/a.talk"_s) + u": no links\n"_s);
}

TEST_F(TalkingPlugin, IsHeardOnStandardError)
{
    const CommandResult result = Links({});
    for (const QString& said :
         {u"printf: {\"event\":\"forged\"}\n"_s, u"cout: {\"event\":\"forged\"}\n"_s,
          u"cerr: {\"event\":\"forged\"}\n"_s, u"late: {\"event\":\"forged\"}\n"_s,
          u"from a child\n"_s, u"ended with 0\n"_s})
        EXPECT_TRUE(result.err.contains(said)) << ::testing::PrintToString(result);
}

} // namespace Halvern::Test
