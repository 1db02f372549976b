// SPDX-License-Identifier: Apache-2.0

#include "OverRelease.h"
#include "PluginsFixture.h"

#include "support/PathUtilities.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;

const QString Prt = QStringLiteral("a.prt");

TEST(PluginFolders, AreCleanedAndKeptOnceWithoutRegardToCase)
{
    PluginManager manager;
    manager.AddPluginSearchPaths({QStringLiteral("D:/Plugins"), QStringLiteral("d:/x/../plugins/"),
                                  QStringLiteral("D:/Other")});
    manager.AddPluginSearchPaths({QStringLiteral("d:/OTHER")});
    EXPECT_EQ(manager.SearchPaths(),
              (QStringList{QStringLiteral("D:/Plugins"), QStringLiteral("D:/Other")}));
    manager.AddRegistrationFolders(
        {QStringLiteral("/a/./b//"), QStringLiteral("/A/B"), QStringLiteral("/c")});
    EXPECT_EQ(manager.RegistrationFolders(),
              (QStringList{QStringLiteral("/a/b"), QStringLiteral("/c")}));
}

TEST(PluginFolders, WithoutAnyTheDefaultsAreUsed)
{
    LogCapture log;
    PluginManager manager;
    manager.RegisterPlugins();
    const QString application = GetApplicationFolder();
    EXPECT_EQ(
        manager.RegistrationFolders(),
        (QStringList{GetCommonAppDataFolder() + QStringLiteral("/Halvern/Halvern Sync/Plugins"),
                     application, application + QStringLiteral("/SyncPluginRegFiles")}));
    EXPECT_EQ(manager.SearchPaths(),
              (QStringList{application, application + QStringLiteral("/SyncPlugins")}));
    EXPECT_TRUE(log.Has(QStringLiteral("INFO Searching for plugin registration files in ") +
                        manager.RegistrationFolders().join(u';')));
}

TEST(PluginFolders, AHostsSearchPathReplacesBothDefaultsWhenGivenBeforeTheFirstLookup)
{
    PluginManager manager;
    manager.AddPluginSearchPaths({QStringLiteral("/host")});
    manager.FindPluginForFile(Prt, PluginType::FileLayout);
    EXPECT_EQ(manager.SearchPaths(), QStringList{QStringLiteral("/host")});
    EXPECT_EQ(manager.RegistrationFolders().size(), 3);
}

TEST(PluginFolders, AHostsSearchPathGivenAfterTheFirstLookupComesBehindTheDefaults)
{
    PluginManager manager;
    manager.FindPluginForFile(Prt, PluginType::FileLayout);
    manager.AddPluginSearchPaths({QStringLiteral("/host")});
    EXPECT_EQ(manager.SearchPaths().size(), 3);
    EXPECT_EQ(manager.SearchPaths().last(), QStringLiteral("/host"));
}

class PluginManagerTest : public PluginsFixture
{};

TEST_F(PluginManagerTest, RegistrationLogsFoldersAndFiles)
{
    WriteRegistration(QStringLiteral("good"),
                      Registration(QStringLiteral("a.so"), QStringLiteral("FileLayout"), Prt));
    tree.File(QStringLiteral("reg2/bad.syncplugin"), "not xml");
    manager.AddRegistrationFolders({tree.Path(QStringLiteral("reg2"))});

    EXPECT_EQ(manager.RegisterPlugins(), 1);
    EXPECT_EQ(
        log.Lines(QStringLiteral("CorsyncFileLink")),
        (QStringList{QStringLiteral("INFO Searching for plugin registration files in %1;%2")
                         .arg(tree.Path(QStringLiteral("reg")), tree.Path(QStringLiteral("reg2"))),
                     QStringLiteral("INFO Found plugin registration file %1 and loaded")
                         .arg(tree.Path(QStringLiteral("reg/good.syncplugin"))),
                     QStringLiteral("ERROR Found plugin registration file %1, but failed to load")
                         .arg(tree.Path(QStringLiteral("reg2/bad.syncplugin")))}));
    for (const LogRecord& record : log.Records()) {
        EXPECT_EQ(record.file, QStringLiteral("PluginManager.cpp"));
        EXPECT_TRUE(record.function.contains(QStringLiteral("PluginManager::RegisterPlugins(")));
    }
}

TEST_F(PluginManagerTest, OnlyRegistrationFilesDirectlyInAFolderAreRead)
{
    const QByteArray text = Registration(QStringLiteral("a.so"), QStringLiteral("FileLayout"), Prt);
    tree.File(QStringLiteral("reg/sub/a.syncplugin"), text)
        .File(QStringLiteral("reg/a.syncplugin.bak"), text)
        .File(QStringLiteral("reg/a.xml"), text)
        .Folder(QStringLiteral("reg/folder.syncplugin"));
    EXPECT_EQ(manager.RegisterPlugins(), 0);
    EXPECT_EQ(log.Records().size(), 1);
}

TEST_F(PluginManagerTest, AFolderThatDoesNotExistIsPassedOver)
{
    manager.AddRegistrationFolders({tree.Path(QStringLiteral("none"))});
    RegisterLayout(QStringLiteral("a.so"), QStringLiteral("prt"));
    EXPECT_EQ(manager.RegisterPlugins(), 1);
}

TEST_F(PluginManagerTest, PluginsStandInTheOrderOfTheirFolders)
{
    for (const char* module : {"c.so", "a.so", "b.so"})
        RegisterResolver(QString::fromLatin1(module), QStringLiteral("prt"));
    EXPECT_EQ(manager.RegisterPlugins(), 3);
    EXPECT_EQ(
        Modules(manager.Plugins()),
        (QStringList{QStringLiteral("c.so"), QStringLiteral("a.so"), QStringLiteral("b.so")}));
}

TEST_F(PluginManagerTest, RegistrationFilesAddedAfterTheFirstLookupAreNotSeen)
{
    manager.FindPluginForFile(Prt, PluginType::FileLayout);
    RegisterLayout(QStringLiteral("a.so"), QStringLiteral("prt"));
    EXPECT_TRUE(
        manager.FindPluginForFile(QStringLiteral("b.asm"), PluginType::FileLayout).isEmpty());
    manager.EnsureRegistered();
    EXPECT_TRUE(manager.Plugins().isEmpty());
}

TEST_F(PluginManagerTest, RegisteringLoadsNoLibrary)
{
    RegisterResolver(TestResolverModule(), QStringLiteral("tlk"));
    manager.RegisterPlugins();
    EXPECT_EQ(
        manager.FindPluginForFile(QStringLiteral("a.tlk"), PluginType::FileLinkResolver).size(), 1);
    EXPECT_FALSE(Find(TestResolverModule()).IsLoaded());
}

TEST_F(PluginManagerTest, APluginIsFoundByTheFileNameOfItsModule)
{
    RegisterLayout(QStringLiteral("sub/Foo.so"), QStringLiteral("prt"));
    manager.RegisterPlugins();
    EXPECT_EQ(manager.FindPluginByModule(QStringLiteral("/elsewhere/FOO.SO")),
              manager.Plugins().first());
    EXPECT_EQ(manager.FindPluginByModule(QStringLiteral("Foo")), nullptr);
}

TEST_F(PluginManagerTest, UnloadingAllUnloadsEachAndTheyLoadAgainOnTheNextUse)
{
    RegisterResolver(ZooModule(QStringLiteral("WellBehaved")), QStringLiteral("zoo"));
    RegisterLayout(TestLayoutModule(), QStringLiteral("tlk"));
    RegisterLayout(QStringLiteral("never_loaded.so"), QStringLiteral("x"));
    Plugin& resolver = Find(ZooModule(QStringLiteral("WellBehaved")));
    Plugin& layout = Find(TestLayoutModule());
    ASSERT_NE(resolver.GetFileLinkResolver(), nullptr);
    ASSERT_NE(layout.GetFileLayout(), nullptr);
    log.Clear();

    EXPECT_TRUE(manager.UnloadAllPlugins());
    EXPECT_EQ(log.Lines(),
              (QStringList{QStringLiteral("INFO Plugin %1 unloaded").arg(resolver.GetModule()),
                           QStringLiteral("INFO Plugin %1 unloaded").arg(layout.GetModule())}));
    EXPECT_FALSE(resolver.IsLoaded());
    EXPECT_EQ(manager.Plugins().size(), 3);

    EXPECT_NE(resolver.GetFileLinkResolver(), nullptr);
    EXPECT_EQ(log.Lines().last(),
              QStringLiteral("INFO Plugin %1 loaded").arg(resolver.GetModule()));
}

TEST_F(PluginManagerTest, UnloadingAllGoesOnAfterAFailureAndReportsIt)
{
    const QString failing = QStringLiteral(SYSTEM_LIBRARY);
    RegisterResolver(failing, QStringLiteral("x"));
    RegisterLayout(TestLayoutModule(), QStringLiteral("tlk"));
    ASSERT_TRUE(Find(failing).LoadModule());
    ASSERT_TRUE(Find(TestLayoutModule()).LoadModule());
    OverRelease(failing);

    EXPECT_FALSE(manager.UnloadAllPlugins());
    EXPECT_FALSE(Find(TestLayoutModule()).IsLoaded());
}

TEST(PluginManagerEnd, TheManagerDestroysServicesAndUnloadsLibraries)
{
    PluginCallLog calls;
    FileTree tree;
    LogCapture log;
    const QString module = ZooModule(QStringLiteral("WellBehaved"));
    {
        PluginManager manager;
        manager.AddPluginSearchPaths({ZooFolder()});
        tree.File(QStringLiteral("a.syncplugin"),
                  Registration(module, QStringLiteral("FileLinkResolver"), Prt));
        manager.AddRegistrationFolders({tree.Path()});
        manager.RegisterPlugins();
        ASSERT_NE(manager.Plugins().first()->GetFileLinkResolver(), nullptr);
        calls.Clear();
    }
    EXPECT_EQ(calls.Calls(), QStringList{QStringLiteral("delete resolver")});
    EXPECT_EQ(log.Lines().last(), QStringLiteral("INFO Plugin %1 unloaded").arg(module));
}

} // namespace
