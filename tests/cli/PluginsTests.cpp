// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <algorithm>

namespace Halvern::Test {

namespace {

class PluginsCommand : public CommandFixture
{
protected:
    CommandResult Plugins(const QStringList& arguments) const
    {
        return Run(QStringList{u"plugins"_qs, u"--plugin-path"_qs, tree.Path(u"plugins"_qs),
                               u"--plugin-path"_qs, TestPluginFolder()} +
                   arguments);
    }
};

} // namespace

TEST_F(PluginsCommand, ListsThoseOfGivenFoldersBeforeTheUsualOnes)
{
    const CommandResult result = Plugins({u"--json"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    const QList<QJsonObject> lines = result.Json();
    ASSERT_GE(lines.size(), 3);
    EXPECT_EQ(lines[0][u"module"].toString(), TestResolverModule());
    EXPECT_EQ(lines[0][u"name"].toString(), u"For tests"_qs);
    EXPECT_EQ(lines[0][u"state"].toString(), u"ok"_qs);
    const auto isGltf = [](const QJsonObject& line) {
        return line[u"module"].toString().contains(u"GltfSyncPlugin"_qs) &&
               line[u"state"].toString() == u"ok"_qs;
    };
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isGltf), 1);
}

TEST_F(PluginsCommand, ThatDoNotLoadAreAFailureUnlessNothingIsLoaded)
{
    tree.File(u"plugins/broken.syncplugin"_qs,
              Registration(u"NoSuchLibrary.so"_qs, u"FileLayout"_qs, u"xyz"_qs));
    const CommandResult result = Plugins({});
    EXPECT_EQ(result.exitCode, 7);
    const QStringList failed = result.Lines().filter(u"NoSuchLibrary.so"_qs);
    ASSERT_EQ(failed.size(), 1) << ::testing::PrintToString(result);
    EXPECT_TRUE(failed[0].startsWith(u"failed"_qs));
    EXPECT_EQ(Plugins({u"--no-load"_qs}).exitCode, 0);
}

TEST_F(PluginsCommand, ARegistrationFileThatIsNoneIsAFailureThatNamesIt)
{
    tree.File(u"plugins/garbage.syncplugin"_qs, "<SyncPlugins");
    const CommandResult result = Plugins({u"--no-load"_qs});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.err.contains(u"garbage.syncplugin"_qs)) << ::testing::PrintToString(result);
}

TEST_F(PluginsCommand, ARegistrationThatIsDoubtfulIsWarnedOfByItAndByEveryImport)
{
    tree.File(u"work/a.tlk"_qs)
        .File(u"plugins/doubtful.syncplugin"_qs,
              Registration(TestLayoutModule(), u"FileLayout"_qs, u"xyz, abc"_qs));
    const QStringList import{u"import"_qs,         u"a.tlk"_qs,
                             u"--cloud-folder"_qs, tree.Path(u"cloud"_qs),
                             u"--database"_qs,     tree.Path(u"sync.db"_qs),
                             u"--plugin-path"_qs,  tree.Path(u"plugins"_qs),
                             u"--plugin-path"_qs,  TestPluginFolder()};
    for (const CommandResult& result : {Plugins({}), Run(import)}) {
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        EXPECT_EQ(result.err.count(u"corsync: warning: "_qs), 1)
            << ::testing::PrintToString(result);
        EXPECT_TRUE(result.err.contains(u"doubtful.syncplugin"_qs));
    }
    const QList<QJsonObject> lines = Plugins({u"--json"_qs}).Json();
    EXPECT_EQ(lines[0][u"event"].toString(), u"warning"_qs);
    EXPECT_EQ(lines[0][u"file"].toString(), tree.Path(u"plugins/doubtful.syncplugin"_qs));
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
