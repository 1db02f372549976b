// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <algorithm>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class PluginsCommand : public CommandFixture
{
protected:
    CommandResult Plugins(const QStringList& arguments) const
    {
        return Run(QStringList{u"plugins"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s),
                               u"--plugin-path"_s, TestPluginFolder()} +
                   arguments);
    }
};

} // namespace

TEST_F(PluginsCommand, ListsThoseOfGivenFoldersBeforeTheUsualOnes)
{
    const CommandResult result = Plugins({u"--json"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    const QList<QJsonObject> lines = result.Json();
    ASSERT_GE(lines.size(), 3);
    EXPECT_EQ(lines[0][u"module"].toString(), TestResolverModule());
    EXPECT_EQ(lines[0][u"name"].toString(), u"For tests"_s);
    EXPECT_EQ(lines[0][u"state"].toString(), u"ok"_s);
    const auto isGltf = [](const QJsonObject& line) {
        return line[u"module"].toString().contains(u"GltfSyncPlugin"_s) &&
               line[u"state"].toString() == u"ok"_s;
    };
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isGltf), 1);
}

TEST_F(PluginsCommand, ThatDoNotLoadAreAFailureUnlessNothingIsLoaded)
{
    tree.File(u"plugins/broken.syncplugin"_s,
              Registration(u"NoSuchLibrary.so"_s, u"FileLayout"_s, u"xyz"_s));
    const CommandResult result = Plugins({});
    EXPECT_EQ(result.exitCode, 7);
    const QStringList failed = result.Lines().filter(u"NoSuchLibrary.so"_s);
    ASSERT_EQ(failed.size(), 1) << ::testing::PrintToString(result);
    EXPECT_TRUE(failed[0].startsWith(u"failed"_s));
    EXPECT_EQ(Plugins({u"--no-load"_s}).exitCode, 0);
}

TEST_F(PluginsCommand, ARegistrationFileThatIsNoneIsAFailureThatNamesIt)
{
    tree.File(u"plugins/garbage.syncplugin"_s, "<SyncPlugins");
    const CommandResult result = Plugins({u"--no-load"_s});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.err.contains(u"garbage.syncplugin"_s)) << ::testing::PrintToString(result);
}

TEST_F(PluginsCommand, ARegistrationThatIsDoubtfulIsWarnedOfByItAndByEveryImport)
{
    tree.File(u"work/a.tlk"_s)
        .File(u"plugins/doubtful.syncplugin"_s,
              Registration(TestLayoutModule(), u"FileLayout"_s, u"xyz, abc"_s));
    const QStringList import{u"import"_s,         u"a.tlk"_s,
                             u"--cloud-folder"_s, tree.Path(u"cloud"_s),
                             u"--database"_s,     tree.Path(u"sync.db"_s),
                             u"--plugin-path"_s,  tree.Path(u"plugins"_s),
                             u"--plugin-path"_s,  TestPluginFolder()};
    for (const CommandResult& result : {Plugins({}), Run(import)}) {
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        EXPECT_EQ(result.err.count(u"corsync: warning: "_s), 1) << ::testing::PrintToString(result);
        EXPECT_TRUE(result.err.contains(u"doubtful.syncplugin"_s));
    }
    const QList<QJsonObject> lines = Plugins({u"--json"_s}).Json();
    EXPECT_EQ(lines[0][u"event"].toString(), u"warning"_s);
    EXPECT_EQ(lines[0][u"file"].toString(), tree.Path(u"plugins/doubtful.syncplugin"_s));
    EXPECT_EQ(lines[0][u"plugin"].toString(), TestLayoutModule());
    EXPECT_FALSE(lines[0][u"text"].toString().isEmpty());
}

TEST_F(PluginsCommand, LeavesNoTrace)
{
    const FileTree::Snapshot before = tree.Contents();
    EXPECT_EQ(Plugins({}).exitCode, 0);
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
