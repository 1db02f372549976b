// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class RetryCommand : public CommandFixture
{
protected:
    CommandResult Retry(const QStringList& arguments) const
    {
        return Run(QStringList{u"retry"_s, u"--cloud-folder"_s, tree.Path(u"cloud"_s),
                               u"--database"_s, tree.Path(u"sync.db"_s), u"--plugin-path"_s,
                               tree.Path(u"plugins"_s), u"--plugin-path"_s, TestPluginFolder()} +
                   arguments);
    }
};

} // namespace

TEST_F(RetryCommand, SaysSoWhenNothingIsToBeDone)
{
    tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n").File(u"work/b.tlk"_s, "b\n");
    ASSERT_EQ(Import({u"a.tlk"_s}).exitCode, 0);
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = Retry({});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.err.contains(u"no copy has links that are still to be rewritten"_s))
        << ::testing::PrintToString(result);
    const CommandResult json = Retry({u"--json"_s});
    ASSERT_EQ(json.Json().size(), 1);
    EXPECT_EQ(json.Json()[0][u"event"].toString(), u"summary"_s);
    EXPECT_EQ(Cloud(), before);
}

TEST_F(RetryCommand, NamesAFolderThatItCannotTakeWithoutTheOptionsOfOtherCommands)
{
    tree.File(u"work/a.tlk"_s);
    ASSERT_EQ(Import({u"a.tlk"_s}).exitCode, 0);
    for (const QString& folder : {tree.Path(u"work"_s), u"a.tlk"_s, u"none"_s}) {
        const CommandResult result = Retry({folder});
        EXPECT_NE(result.exitCode, 0);
        EXPECT_TRUE(result.err.contains(folder)) << ::testing::PrintToString(result);
        EXPECT_FALSE(result.err.contains(u"--to"_s)) << ::testing::PrintToString(result);
    }
    const CommandResult import = Import({u"a.tlk"_s, u"--to"_s, tree.Path(u"work"_s)});
    EXPECT_TRUE(import.err.contains(u"--to"_s)) << ::testing::PrintToString(import);
}

} // namespace Halvern::Test
