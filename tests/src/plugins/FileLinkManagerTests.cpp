// SPDX-License-Identifier: Apache-2.0

#include "filelink/FileLinkManager.h"

#include "LogCapture.h"
#include "ServicesFixture.h"
#include "TestPlugins.h"
#include "plugins/PluginManager.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QDateTime>
#include <QtCore/QLibrary>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;
using Halvern::SyncServices::FileMapping;
using Halvern::SyncServices::SyncManager;

/// The module is not initialised at the start of a test, nor at its end.
class FileLinkManagerLife : public ::testing::Test
{
protected:
    FileLinkManagerLife() { FolderManager::Configure(SettingsFor(tree)); }
    ~FileLinkManagerLife() override
    {
        while (FileLinkManager::GetInstance())
            FileLinkManager::Uninitialize();
    }

    FileTree tree;
    LogCapture log;
};

TEST_F(FileLinkManagerLife, BeforeInitializeThereIsNoInstance)
{
    EXPECT_EQ(FileLinkManager::GetInstance(), nullptr);
    EXPECT_EQ(GetPluginManager(), nullptr);
}

TEST_F(FileLinkManagerLife, InitializeStartsTheServicesAndMakesOneManager)
{
    FileLinkManager::Initialize();
    EXPECT_NE(FolderManager::GetInstance(), nullptr);
    EXPECT_NE(SyncManager::GetInstance(), nullptr);
    EXPECT_NE(FileLinkManager::GetInstance(), nullptr);
    ASSERT_NE(GetPluginManager(), nullptr);
    EXPECT_TRUE(GetPluginManager()->Plugins().isEmpty());
}

TEST_F(FileLinkManagerLife, CallsAreCountedAndTheLastUninitializeEndsIt)
{
    FileLinkManager::Initialize();
    FileLinkManager* instance = FileLinkManager::GetInstance();
    PluginManager* plugins = GetPluginManager();
    FileLinkManager::Initialize();
    EXPECT_EQ(FileLinkManager::GetInstance(), instance);
    EXPECT_EQ(GetPluginManager(), plugins);

    FileLinkManager::Uninitialize();
    EXPECT_EQ(FileLinkManager::GetInstance(), instance);
    EXPECT_NE(FolderManager::GetInstance(), nullptr);
    EXPECT_NE(SyncManager::GetInstance(), nullptr);

    FileLinkManager::Uninitialize();
    EXPECT_EQ(FileLinkManager::GetInstance(), nullptr);
    EXPECT_EQ(GetPluginManager(), nullptr);
    EXPECT_EQ(SyncManager::GetInstance(), nullptr);
    EXPECT_EQ(FolderManager::GetInstance(), nullptr);
}

TEST_F(FileLinkManagerLife, AnExcessUninitializeChangesNothing)
{
    FileLinkManager::Uninitialize();
    FileLinkManager::Uninitialize();
    EXPECT_EQ(FileLinkManager::GetInstance(), nullptr);
    FileLinkManager::Initialize();
    EXPECT_NE(FileLinkManager::GetInstance(), nullptr);
    FileLinkManager::Uninitialize();
    EXPECT_EQ(FileLinkManager::GetInstance(), nullptr);
}

TEST_F(FileLinkManagerLife, ItCanBeInitialisedAgainWithNothingLeftOver)
{
    FileLinkManager::Initialize();
    FileLinkManager::GetInstance()->AddPluginSearchPaths({tree.Path()});
    FileLinkManager::Uninitialize();
    FolderManager::Configure(SettingsFor(tree));
    FileLinkManager::Initialize();
    EXPECT_TRUE(GetPluginManager()->SearchPaths().isEmpty());
}

TEST_F(FileLinkManagerLife, TheLastUninitializeUnloadsPlugins)
{
    FileLinkManager::Initialize();
    RegisterTestResolver(tree, u"reg"_s);
    FileLinkManager::GetInstance()->AddPluginSearchPaths({TestPluginFolder()});
    FileLinkManager::GetInstance()->AddPluginRegistrationFolders({tree.Path(u"reg"_s)});
    ASSERT_TRUE(FileLinkManager::GetInstance()->LoadPlugin(TestResolverModule(), nullptr));
    log.Clear();
    FileLinkManager::Uninitialize();
    EXPECT_EQ(log.Lines(), QStringList{u"INFO Plugin %1 unloaded"_s.arg(TestResolverModule())});
}

class FileLinkManagerTest : public FileLinkManagerLife
{
protected:
    FileLinkManagerTest()
    {
        FileLinkManager::Initialize();
        RegisterTestResolver(tree, u"reg1"_s);
        RegisterTestLayout(tree, u"reg2"_s);
        Manager().AddPluginSearchPaths({TestPluginFolder()});
        Manager().AddPluginRegistrationFolders({tree.Path(u"reg1"_s), tree.Path(u"reg2"_s)});
    }
    static FileLinkManager& Manager() { return *FileLinkManager::GetInstance(); }
};

TEST_F(FileLinkManagerTest, GetPluginsTellsWhatRegistrationFilesSayAndLoadsNothing)
{
    const QList<PluginDescription> plugins = Manager().GetPlugins();
    ASSERT_EQ(plugins.size(), 2);
    EXPECT_EQ(plugins[0].name, u"For tests"_s);
    EXPECT_EQ(plugins[0].module, TestResolverModule());
    EXPECT_EQ(plugins[0].service, u"File Link Resolver"_s);
    EXPECT_EQ(plugins[0].fileTypes, (QStringList{u"tlk"_s, u"tasm"_s}));
    EXPECT_EQ(plugins[0].priority, 0u);
    EXPECT_EQ(plugins[1].module, TestLayoutModule());
    EXPECT_EQ(plugins[1].service, u"File Layout"_s);
    for (const Plugin* plugin : GetPluginManager()->Plugins())
        EXPECT_FALSE(plugin->IsLoaded());
    EXPECT_EQ(Manager().GetPlugins().size(), 2);
}

TEST_F(FileLinkManagerTest, LoadPluginLoadsTheLibraryAndMakesTheService)
{
    QString error = u"untouched"_s;
    EXPECT_TRUE(Manager().LoadPlugin(TestResolverModule().toUpper(), &error));
    EXPECT_TRUE(Manager().LoadPlugin(TestLayoutModule(), &error));
    EXPECT_EQ(error, u"untouched"_s);
    for (const Plugin* plugin : GetPluginManager()->Plugins())
        EXPECT_TRUE(plugin->IsLoaded());
}

TEST_F(FileLinkManagerTest, LoadPluginTellsWhatWasWrong)
{
    tree.File(u"reg3/a.syncplugin"_s, Registration(u"nowhere.so"_s, u"FileLayout"_s, u"x"_s));
    tree.File(u"reg4/a.syncplugin"_s, Registration(u"copy.so"_s, u"FileLayout"_s, u"x"_s));
    ASSERT_TRUE(
        QFile::copy(TestPluginFolder() + u'/' + TestResolverModule(), tree.Path(u"copy.so"_s)));
    Manager().AddPluginSearchPaths({tree.Path()});
    Manager().AddPluginRegistrationFolders({tree.Path(u"reg3"_s), tree.Path(u"reg4"_s)});

    QString error;
    EXPECT_FALSE(Manager().LoadPlugin(u"unknown.so"_s, &error));
    EXPECT_EQ(error, u"Plugin unknown.so is not registered"_s);
    EXPECT_FALSE(Manager().LoadPlugin(u"unknown.so"_s, nullptr));

    QLibrary reference(u"nowhere.so"_s);
    ASSERT_FALSE(reference.load());
    EXPECT_FALSE(Manager().LoadPlugin(u"nowhere.so"_s, &error));
    EXPECT_EQ(error, u"Failed to load plugin nowhere.so. Error %1."_s.arg(reference.errorString()));

    EXPECT_FALSE(Manager().LoadPlugin(u"copy.so"_s, &error));
    EXPECT_EQ(error, u"Exported function CreateSyncPluginFactory not found in plugin copy.so"_s);
}

TEST_F(FileLinkManagerTest, LoadPluginTellsWhichContractAPluginWants)
{
    tree.File(u"reg3/a.syncplugin"_s,
              "<SyncPlugins><P Module=\"a.so\" ContractVersion=\"7\"><FileLayout FileTypes=\"x\"/>"
              "</P></SyncPlugins>");
    Manager().AddPluginRegistrationFolders({tree.Path(u"reg3"_s)});
    QString error;
    EXPECT_FALSE(Manager().LoadPlugin(u"a.so"_s, &error));
    EXPECT_EQ(error, u"Plugin a.so wants contract version 7, this program has version 1"_s);
}

TEST_F(FileLinkManagerTest, RegistrationProblemsAreToldWithoutLoadingOrLoggingAnything)
{
    const QString file = u"reg3/a.syncplugin"_s;
    tree.File(file, "<SyncPlugins><P Module=\"a.so\"><FileLayout FileTypes=\"x, y\"/></P>"
                    "</SyncPlugins>");
    Manager().AddPluginRegistrationFolders({tree.Path(u"reg3"_s)});
    const QList<Problem> problems = Manager().GetRegistrationProblems();
    ASSERT_EQ(problems.size(), 1);
    EXPECT_EQ(problems[0].stage, Stage::Plugins);
    EXPECT_EQ(problems[0].kind, ProblemKind::Registration);
    EXPECT_EQ(problems[0].file, tree.Path(file));
    EXPECT_EQ(problems[0].plugin, u"a.so"_s);
    EXPECT_EQ(problems[0].text, u"FileTypes: no file has the type \" y\", separate "
                                "types by a comma, without blanks"_s);
    for (const Plugin* plugin : GetPluginManager()->Plugins())
        EXPECT_FALSE(plugin->IsLoaded());
    EXPECT_EQ(log.Lines().filter(u"FileTypes"_s), QStringList());
    EXPECT_EQ(Manager().GetRegistrationProblems().size(), 1) << "the files are read once";
}

TEST_F(FileLinkManagerTest, UnloadAllPluginsUnloadsThemAndTheyLoadAgain)
{
    ASSERT_TRUE(Manager().LoadPlugin(TestResolverModule(), nullptr));
    log.Clear();
    EXPECT_TRUE(Manager().UnloadAllPlugins());
    EXPECT_EQ(log.Lines(), QStringList{u"INFO Plugin %1 unloaded"_s.arg(TestResolverModule())});
    EXPECT_TRUE(Manager().LoadPlugin(TestResolverModule(), nullptr));
}

TEST_F(FileLinkManagerTest, DeletingTheCopyHistoryDeletesThatOfTheCurrentUserOnly)
{
    const auto database = FolderManager::GetInstance()->GetSyncDatabase();
    ASSERT_NE(database, nullptr);
    const auto add = [&](int user) {
        const auto mapping =
            std::make_shared<FileMapping>(tree.Path(u"a.tlk"_s), tree.Path(u"b.tlk"_s), user);
        mapping->SetCopyDate(QDateTime::currentDateTime());
        return database->AddAndUpdateFileCopyHistory({mapping}, {});
    };
    ASSERT_TRUE(add(7));
    ASSERT_TRUE(add(8));

    EXPECT_TRUE(Manager().DeleteFileCopyHistory());
    EXPECT_TRUE(database->GetFileCopyHistoryByAuthenticationId(7).isEmpty());
    EXPECT_EQ(database->GetFileCopyHistoryByAuthenticationId(8).size(), 1);
}

TEST_F(FileLinkManagerTest, WithoutADatabaseTheCopyHistoryIsNotDeleted)
{
    FolderManager::GetInstance()->SetSyncDatabase(nullptr);
    EXPECT_FALSE(Manager().DeleteFileCopyHistory());
}

TEST_F(FileLinkManagerTest, WithoutServicesTheCopyHistoryIsNotDeleted)
{
    SyncManager::Uninitialize();
    FolderManager::Uninitialize();
    EXPECT_FALSE(Manager().DeleteFileCopyHistory());
}

} // namespace
