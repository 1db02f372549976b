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
    RegisterTestResolver(tree, QStringLiteral("reg"));
    FileLinkManager::GetInstance()->AddPluginSearchPaths({TestPluginFolder()});
    FileLinkManager::GetInstance()->AddPluginRegistrationFolders(
        {tree.Path(QStringLiteral("reg"))});
    ASSERT_TRUE(FileLinkManager::GetInstance()->LoadPlugin(TestResolverModule(), nullptr));
    log.Clear();
    FileLinkManager::Uninitialize();
    EXPECT_EQ(log.Lines(),
              QStringList{QStringLiteral("INFO Plugin %1 unloaded").arg(TestResolverModule())});
}

class FileLinkManagerTest : public FileLinkManagerLife
{
protected:
    FileLinkManagerTest()
    {
        FileLinkManager::Initialize();
        RegisterTestResolver(tree, QStringLiteral("reg1"));
        RegisterTestLayout(tree, QStringLiteral("reg2"));
        Manager().AddPluginSearchPaths({TestPluginFolder()});
        Manager().AddPluginRegistrationFolders(
            {tree.Path(QStringLiteral("reg1")), tree.Path(QStringLiteral("reg2"))});
    }
    static FileLinkManager& Manager() { return *FileLinkManager::GetInstance(); }
};

TEST_F(FileLinkManagerTest, GetPluginsTellsWhatRegistrationFilesSayAndLoadsNothing)
{
    const QList<PluginDescription> plugins = Manager().GetPlugins();
    ASSERT_EQ(plugins.size(), 2);
    EXPECT_EQ(plugins[0].name, QStringLiteral("For tests"));
    EXPECT_EQ(plugins[0].module, TestResolverModule());
    EXPECT_EQ(plugins[0].service, QStringLiteral("File Link Resolver"));
    EXPECT_EQ(plugins[0].fileTypes, (QStringList{QStringLiteral("tlk"), QStringLiteral("tasm")}));
    EXPECT_EQ(plugins[0].priority, 0u);
    EXPECT_EQ(plugins[1].module, TestLayoutModule());
    EXPECT_EQ(plugins[1].service, QStringLiteral("File Layout"));
    for (const Plugin* plugin : GetPluginManager()->Plugins())
        EXPECT_FALSE(plugin->IsLoaded());
    EXPECT_EQ(Manager().GetPlugins().size(), 2);
}

TEST_F(FileLinkManagerTest, LoadPluginLoadsTheLibraryAndMakesTheService)
{
    QString error = QStringLiteral("untouched");
    EXPECT_TRUE(Manager().LoadPlugin(TestResolverModule().toUpper(), &error));
    EXPECT_TRUE(Manager().LoadPlugin(TestLayoutModule(), &error));
    EXPECT_EQ(error, QStringLiteral("untouched"));
    for (const Plugin* plugin : GetPluginManager()->Plugins())
        EXPECT_TRUE(plugin->IsLoaded());
}

TEST_F(FileLinkManagerTest, LoadPluginTellsWhatWasWrong)
{
    tree.File(QStringLiteral("reg3/a.syncplugin"),
              Registration(QStringLiteral("nowhere.so"), QStringLiteral("FileLayout"),
                           QStringLiteral("x")));
    tree.File(
        QStringLiteral("reg4/a.syncplugin"),
        Registration(QStringLiteral("copy.so"), QStringLiteral("FileLayout"), QStringLiteral("x")));
    ASSERT_TRUE(QFile::copy(TestPluginFolder() + u'/' + TestResolverModule(),
                            tree.Path(QStringLiteral("copy.so"))));
    Manager().AddPluginSearchPaths({tree.Path()});
    Manager().AddPluginRegistrationFolders(
        {tree.Path(QStringLiteral("reg3")), tree.Path(QStringLiteral("reg4"))});

    QString error;
    EXPECT_FALSE(Manager().LoadPlugin(QStringLiteral("unknown.so"), &error));
    EXPECT_EQ(error, QStringLiteral("Plugin unknown.so is not registered"));
    EXPECT_FALSE(Manager().LoadPlugin(QStringLiteral("unknown.so"), nullptr));

    QLibrary reference(QStringLiteral("nowhere.so"));
    ASSERT_FALSE(reference.load());
    EXPECT_FALSE(Manager().LoadPlugin(QStringLiteral("nowhere.so"), &error));
    EXPECT_EQ(
        error,
        QStringLiteral("Failed to load plugin nowhere.so. Error %1.").arg(reference.errorString()));

    EXPECT_FALSE(Manager().LoadPlugin(QStringLiteral("copy.so"), &error));
    EXPECT_EQ(error, QStringLiteral(
                         "Exported function CreateSyncPluginFactory not found in plugin copy.so"));
}

TEST_F(FileLinkManagerTest, LoadPluginTellsWhichContractAPluginWants)
{
    tree.File(QStringLiteral("reg3/a.syncplugin"),
              "<SyncPlugins><P Module=\"a.so\" ContractVersion=\"7\"><FileLayout FileTypes=\"x\"/>"
              "</P></SyncPlugins>");
    Manager().AddPluginRegistrationFolders({tree.Path(QStringLiteral("reg3"))});
    QString error;
    EXPECT_FALSE(Manager().LoadPlugin(QStringLiteral("a.so"), &error));
    EXPECT_EQ(error,
              QStringLiteral("Plugin a.so wants contract version 7, this program has version 1"));
}

TEST_F(FileLinkManagerTest, RegistrationProblemsAreToldWithoutLoadingOrLoggingAnything)
{
    const QString file = QStringLiteral("reg3/a.syncplugin");
    tree.File(file, "<SyncPlugins><P Module=\"a.so\"><FileLayout FileTypes=\"x, y\"/></P>"
                    "</SyncPlugins>");
    Manager().AddPluginRegistrationFolders({tree.Path(QStringLiteral("reg3"))});
    const QList<Problem> problems = Manager().GetRegistrationProblems();
    ASSERT_EQ(problems.size(), 1);
    EXPECT_EQ(problems[0].stage, Stage::Plugins);
    EXPECT_EQ(problems[0].kind, ProblemKind::Registration);
    EXPECT_EQ(problems[0].file, tree.Path(file));
    EXPECT_EQ(problems[0].plugin, QStringLiteral("a.so"));
    EXPECT_EQ(problems[0].text, QStringLiteral("FileTypes: no file has the type \" y\", separate "
                                               "types by a comma, without blanks"));
    for (const Plugin* plugin : GetPluginManager()->Plugins())
        EXPECT_FALSE(plugin->IsLoaded());
    EXPECT_EQ(log.Lines().filter(QStringLiteral("FileTypes")), QStringList());
    EXPECT_EQ(Manager().GetRegistrationProblems().size(), 1) << "the files are read once";
}

TEST_F(FileLinkManagerTest, UnloadAllPluginsUnloadsThemAndTheyLoadAgain)
{
    ASSERT_TRUE(Manager().LoadPlugin(TestResolverModule(), nullptr));
    log.Clear();
    EXPECT_TRUE(Manager().UnloadAllPlugins());
    EXPECT_EQ(log.Lines(),
              QStringList{QStringLiteral("INFO Plugin %1 unloaded").arg(TestResolverModule())});
    EXPECT_TRUE(Manager().LoadPlugin(TestResolverModule(), nullptr));
}

TEST_F(FileLinkManagerTest, DeletingTheCopyHistoryDeletesThatOfTheCurrentUserOnly)
{
    const auto database = FolderManager::GetInstance()->GetSyncDatabase();
    ASSERT_NE(database, nullptr);
    const auto add = [&](int user) {
        const auto mapping = std::make_shared<FileMapping>(
            tree.Path(QStringLiteral("a.tlk")), tree.Path(QStringLiteral("b.tlk")), user);
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
