// SPDX-License-Identifier: Apache-2.0

// Where Windows finds a plug-in's library, and what becomes of it after unloading.

#include "FileTree.h"
#include "LogCapture.h"
#include "TestPlugins.h"
#include "plugins/PluginManager.h"
#include "support/PathUtilities.h"

#include <QtCore/QCoreApplication>

#include <gtest/gtest.h>

#include <windows.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using FileLink::Plugin;
using FileLink::PluginManager;
using FileLink::PluginType;

class PluginSearch : public ::testing::Test
{
protected:
    /// The resolver's library in a folder of the tree, under this name.
    void PutLibrary(const QString& path)
    {
        tree.File(path).Remove(path);
        ASSERT_TRUE(QFile::copy(TestPluginFolder() + u'/' + TestResolverModule(), tree.Path(path)));
    }

    Plugin& Register(PluginManager& manager, const QString& module)
    {
        tree.File(u"reg/x.syncplugin"_s, Registration(module, u"FileLinkResolver"_s, u"tlk"_s));
        manager.AddRegistrationFolders({tree.Path(u"reg"_s)});
        manager.RegisterPlugins();
        return *manager.FindPluginByModule(module);
    }

    /// Whether the system has a library of this file name in the process.
    static bool IsMapped(const QString& module)
    {
        return ::GetModuleHandleW(reinterpret_cast<const wchar_t*>(module.utf16())) != nullptr;
    }

    FileTree tree;
    LogCapture log;
};

} // namespace

TEST_F(PluginSearch, TheSecondSearchFolderIsAskedWhenTheFirstHasNoSuchLibrary)
{
    PutLibrary(u"two/SecondFolder.dll"_s);
    PluginManager manager;
    manager.AddPluginSearchPaths({tree.Path(u"one"_s), tree.Path(u"two"_s)});
    Plugin& plugin = Register(manager, u"SecondFolder.dll"_s);

    EXPECT_TRUE(plugin.TryService()) << plugin.GetLastError().toStdString();
    EXPECT_TRUE(IsMapped(u"SecondFolder.dll"_s));
}

TEST_F(PluginSearch, ALibraryInNoSearchFolderIsFoundByItsBareNameWhereTheSystemLooks)
{
    PutLibrary(u"path/BareName.dll"_s);
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QDir::toNativeSeparators(tree.Path(u"path"_s)).toLocal8Bit() + ';' + path);
    PluginManager manager;
    manager.AddPluginSearchPaths({tree.Path(u"one"_s)});
    Plugin& plugin = Register(manager, u"BareName.dll"_s);

    EXPECT_TRUE(plugin.TryService()) << plugin.GetLastError().toStdString();
    qputenv("PATH", path);
}

TEST_F(PluginSearch, AnUnloadedLibraryIsReleasedSoThatItCanBeReplacedAndLoadsAgain)
{
    PutLibrary(u"one/Again.dll"_s);
    PluginManager manager;
    manager.AddPluginSearchPaths({tree.Path(u"one"_s)});
    Plugin& plugin = Register(manager, u"Again.dll"_s);
    ASSERT_TRUE(plugin.TryService());
    EXPECT_FALSE(QFile::remove(tree.Path(u"one/Again.dll"_s)));

    EXPECT_TRUE(manager.UnloadAllPlugins());

    EXPECT_FALSE(IsMapped(u"Again.dll"_s));
    EXPECT_TRUE(QFile::remove(tree.Path(u"one/Again.dll"_s)));
    PutLibrary(u"one/Again.dll"_s);
    EXPECT_TRUE(plugin.TryService()) << plugin.GetLastError().toStdString();
}

TEST_F(PluginSearch, TheDataFolderOfAllUsersHoldsRegistrationFiles)
{
    const QString folder =
        u"%1/Halvern/Halvern Sync/Plugins"_s.arg(FileLink::GetCommonAppDataFolder());
    const QString file = folder + u"/corsync-windows-test.syncplugin"_s;
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile registration(file);
    ASSERT_TRUE(registration.open(QIODevice::WriteOnly));
    registration.write(Registration(u"ForEveryone.dll"_s, u"FileLinkResolver"_s, u"tlk"_s));
    registration.close();
    PluginManager manager;

    manager.RegisterPlugins();

    EXPECT_TRUE(manager.FindPluginByModule(u"ForEveryone.dll"_s));
    EXPECT_TRUE(registration.remove());
}

} // namespace Halvern::Test
