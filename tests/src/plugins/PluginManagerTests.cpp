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
using namespace Qt::StringLiterals;

const QString Prt = u"a.prt"_s;

TEST(PluginFolders, AreCleanedAndKeptOnceWithoutRegardToCase)
{
    PluginManager manager;
    manager.AddPluginSearchPaths({u"D:/Plugins"_s, u"d:/x/../plugins/"_s, u"D:/Other"_s});
    manager.AddPluginSearchPaths({u"d:/OTHER"_s});
    EXPECT_EQ(manager.SearchPaths(), (QStringList{u"D:/Plugins"_s, u"D:/Other"_s}));
    manager.AddRegistrationFolders({u"/a/./b//"_s, u"/A/B"_s, u"/c"_s});
    EXPECT_EQ(manager.RegistrationFolders(), (QStringList{u"/a/b"_s, u"/c"_s}));
}

TEST(PluginFolders, WithoutAnyTheDefaultsAreUsed)
{
    LogCapture log;
    PluginManager manager;
    manager.RegisterPlugins();
    const QString application = GetApplicationFolder();
    EXPECT_EQ(manager.RegistrationFolders(),
              (QStringList{GetCommonAppDataFolder() + u"/Halvern/Halvern Sync/Plugins"_s,
                           application, application + u"/SyncPluginRegFiles"_s}));
    EXPECT_EQ(manager.SearchPaths(), (QStringList{application, application + u"/SyncPlugins"_s}));
    EXPECT_TRUE(log.Has(u"INFO Searching for plugin registration files in "_s +
                        manager.RegistrationFolders().join(u';')));
}

TEST(PluginFolders, AHostsSearchPathReplacesBothDefaultsWhenGivenBeforeTheFirstLookup)
{
    PluginManager manager;
    manager.AddPluginSearchPaths({u"/host"_s});
    manager.FindPluginForFile(Prt, PluginType::FileLayout);
    EXPECT_EQ(manager.SearchPaths(), QStringList{u"/host"_s});
    EXPECT_EQ(manager.RegistrationFolders().size(), 3);
}

TEST(PluginFolders, AHostsSearchPathGivenAfterTheFirstLookupComesBehindTheDefaults)
{
    PluginManager manager;
    manager.FindPluginForFile(Prt, PluginType::FileLayout);
    manager.AddPluginSearchPaths({u"/host"_s});
    EXPECT_EQ(manager.SearchPaths().size(), 3);
    EXPECT_EQ(manager.SearchPaths().last(), u"/host"_s);
}

class PluginManagerTest : public PluginsFixture
{};

TEST_F(PluginManagerTest, RegistrationLogsFoldersAndFiles)
{
    WriteRegistration(u"good"_s, Registration(u"a.so"_s, u"FileLayout"_s, Prt));
    tree.File(u"reg2/bad.syncplugin"_s, "not xml");
    manager.AddRegistrationFolders({tree.Path(u"reg2"_s)});

    EXPECT_EQ(manager.RegisterPlugins(), 1);
    EXPECT_EQ(log.Lines(u"CorsyncFileLink"_s),
              (QStringList{u"INFO Searching for plugin registration files in %1;%2"_s.arg(
                               tree.Path(u"reg"_s), tree.Path(u"reg2"_s)),
                           u"INFO Found plugin registration file %1 and loaded"_s.arg(
                               tree.Path(u"reg/good.syncplugin"_s)),
                           u"ERROR Found plugin registration file %1, but failed to load"_s.arg(
                               tree.Path(u"reg2/bad.syncplugin"_s))}));
    for (const LogRecord& record : log.Records()) {
        EXPECT_EQ(record.file, u"PluginManager.cpp"_s);
        EXPECT_TRUE(record.function.contains(u"PluginManager::RegisterPlugins("_s));
    }
}

TEST_F(PluginManagerTest, OnlyRegistrationFilesDirectlyInAFolderAreRead)
{
    const QByteArray text = Registration(u"a.so"_s, u"FileLayout"_s, Prt);
    tree.File(u"reg/sub/a.syncplugin"_s, text)
        .File(u"reg/a.syncplugin.bak"_s, text)
        .File(u"reg/a.xml"_s, text)
        .Folder(u"reg/folder.syncplugin"_s);
    EXPECT_EQ(manager.RegisterPlugins(), 0);
    EXPECT_EQ(log.Records().size(), 1);
}

TEST_F(PluginManagerTest, AFolderThatDoesNotExistIsPassedOver)
{
    manager.AddRegistrationFolders({tree.Path(u"none"_s)});
    RegisterLayout(u"a.so"_s, u"prt"_s);
    EXPECT_EQ(manager.RegisterPlugins(), 1);
}

TEST_F(PluginManagerTest, PluginsStandInTheOrderOfTheirFolders)
{
    for (const char* module : {"c.so", "a.so", "b.so"})
        RegisterResolver(QString::fromLatin1(module), u"prt"_s);
    EXPECT_EQ(manager.RegisterPlugins(), 3);
    EXPECT_EQ(Modules(manager.Plugins()), (QStringList{u"c.so"_s, u"a.so"_s, u"b.so"_s}));
}

TEST_F(PluginManagerTest, RegistrationFilesAddedAfterTheFirstLookupAreNotSeen)
{
    manager.FindPluginForFile(Prt, PluginType::FileLayout);
    RegisterLayout(u"a.so"_s, u"prt"_s);
    EXPECT_TRUE(manager.FindPluginForFile(u"b.asm"_s, PluginType::FileLayout).isEmpty());
    manager.EnsureRegistered();
    EXPECT_TRUE(manager.Plugins().isEmpty());
}

TEST_F(PluginManagerTest, RegisteringLoadsNoLibrary)
{
    RegisterResolver(TestResolverModule(), u"tlk"_s);
    manager.RegisterPlugins();
    EXPECT_EQ(manager.FindPluginForFile(u"a.tlk"_s, PluginType::FileLinkResolver).size(), 1);
    EXPECT_FALSE(Find(TestResolverModule()).IsLoaded());
}

TEST_F(PluginManagerTest, APluginIsFoundByTheFileNameOfItsModule)
{
    RegisterLayout(u"sub/Foo.so"_s, u"prt"_s);
    manager.RegisterPlugins();
    EXPECT_EQ(manager.FindPluginByModule(u"/elsewhere/FOO.SO"_s), manager.Plugins().first());
    EXPECT_EQ(manager.FindPluginByModule(u"Foo"_s), nullptr);
}

TEST_F(PluginManagerTest, UnloadingAllUnloadsEachAndTheyLoadAgainOnTheNextUse)
{
    RegisterResolver(ZooModule(u"WellBehaved"_s), u"zoo"_s);
    RegisterLayout(TestLayoutModule(), u"tlk"_s);
    RegisterLayout(u"never_loaded.so"_s, u"x"_s);
    Plugin& resolver = Find(ZooModule(u"WellBehaved"_s));
    Plugin& layout = Find(TestLayoutModule());
    ASSERT_NE(resolver.GetFileLinkResolver(), nullptr);
    ASSERT_NE(layout.GetFileLayout(), nullptr);
    log.Clear();

    EXPECT_TRUE(manager.UnloadAllPlugins());
    EXPECT_EQ(log.Lines(), (QStringList{u"INFO Plugin %1 unloaded"_s.arg(resolver.GetModule()),
                                        u"INFO Plugin %1 unloaded"_s.arg(layout.GetModule())}));
    EXPECT_FALSE(resolver.IsLoaded());
    EXPECT_EQ(manager.Plugins().size(), 3);

    EXPECT_NE(resolver.GetFileLinkResolver(), nullptr);
    EXPECT_EQ(log.Lines().last(), u"INFO Plugin %1 loaded"_s.arg(resolver.GetModule()));
}

TEST_F(PluginManagerTest, UnloadingAllGoesOnAfterAFailureAndReportsIt)
{
    const QString failing = QStringLiteral(SYSTEM_LIBRARY);
    RegisterResolver(failing, u"x"_s);
    RegisterLayout(TestLayoutModule(), u"tlk"_s);
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
    const QString module = ZooModule(u"WellBehaved"_s);
    {
        PluginManager manager;
        manager.AddPluginSearchPaths({ZooFolder()});
        tree.File(u"a.syncplugin"_s, Registration(module, u"FileLinkResolver"_s, Prt));
        manager.AddRegistrationFolders({tree.Path()});
        manager.RegisterPlugins();
        ASSERT_NE(manager.Plugins().first()->GetFileLinkResolver(), nullptr);
        calls.Clear();
    }
    EXPECT_EQ(calls.Calls(), QStringList{u"delete resolver"_s});
    EXPECT_EQ(log.Lines().last(), u"INFO Plugin %1 unloaded"_s.arg(module));
}

} // namespace
