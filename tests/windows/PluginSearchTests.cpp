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
        tree.File(QStringLiteral("reg/x.syncplugin"),
                  Registration(module, QStringLiteral("FileLinkResolver"), QStringLiteral("tlk")));
        manager.AddRegistrationFolders({tree.Path(QStringLiteral("reg"))});
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
    PutLibrary(QStringLiteral("two/SecondFolder.dll"));
    PluginManager manager;
    manager.AddPluginSearchPaths(
        {tree.Path(QStringLiteral("one")), tree.Path(QStringLiteral("two"))});
    Plugin& plugin = Register(manager, QStringLiteral("SecondFolder.dll"));

    EXPECT_TRUE(plugin.TryService()) << plugin.GetLastError().toStdString();
    EXPECT_TRUE(IsMapped(QStringLiteral("SecondFolder.dll")));
}

TEST_F(PluginSearch, ALibraryInNoSearchFolderIsFoundByItsBareNameWhereTheSystemLooks)
{
    PutLibrary(QStringLiteral("path/BareName.dll"));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH",
            QDir::toNativeSeparators(tree.Path(QStringLiteral("path"))).toLocal8Bit() + ';' + path);
    PluginManager manager;
    manager.AddPluginSearchPaths({tree.Path(QStringLiteral("one"))});
    Plugin& plugin = Register(manager, QStringLiteral("BareName.dll"));

    EXPECT_TRUE(plugin.TryService()) << plugin.GetLastError().toStdString();
    qputenv("PATH", path);
}

TEST_F(PluginSearch, AnUnloadedLibraryIsReleasedSoThatItCanBeReplacedAndLoadsAgain)
{
    PutLibrary(QStringLiteral("one/Again.dll"));
    PluginManager manager;
    manager.AddPluginSearchPaths({tree.Path(QStringLiteral("one"))});
    Plugin& plugin = Register(manager, QStringLiteral("Again.dll"));
    ASSERT_TRUE(plugin.TryService());
    EXPECT_FALSE(QFile::remove(tree.Path(QStringLiteral("one/Again.dll"))));

    EXPECT_TRUE(manager.UnloadAllPlugins());

    EXPECT_FALSE(IsMapped(QStringLiteral("Again.dll")));
    EXPECT_TRUE(QFile::remove(tree.Path(QStringLiteral("one/Again.dll"))));
    PutLibrary(QStringLiteral("one/Again.dll"));
    EXPECT_TRUE(plugin.TryService()) << plugin.GetLastError().toStdString();
}

TEST_F(PluginSearch, TheDataFolderOfAllUsersHoldsRegistrationFiles)
{
    const QString folder =
        QStringLiteral("%1/Halvern/Halvern Sync/Plugins").arg(FileLink::GetCommonAppDataFolder());
    const QString file = folder + QStringLiteral("/corsync-windows-test.syncplugin");
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile registration(file);
    ASSERT_TRUE(registration.open(QIODevice::WriteOnly));
    registration.write(Registration(QStringLiteral("ForEveryone.dll"),
                                    QStringLiteral("FileLinkResolver"), QStringLiteral("tlk")));
    registration.close();
    PluginManager manager;

    manager.RegisterPlugins();

    EXPECT_TRUE(manager.FindPluginByModule(QStringLiteral("ForEveryone.dll")));
    EXPECT_TRUE(registration.remove());
}

} // namespace Halvern::Test
