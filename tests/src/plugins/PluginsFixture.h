// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"
#include "LogCapture.h"
#include "TestPlugins.h"
#include "plugins/PluginManager.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

/// Folder and library name of a plug-in of the zoo: see zoo/ZooPlugin.cpp for the names.
QString ZooFolder();
QString ZooModule(const QString& fault);

/// A plug-in manager that looks for registration files in the tree's folder "reg" and for
/// libraries among the test plug-ins and the zoo.
class PluginsFixture : public ::testing::Test
{
protected:
    PluginsFixture();

    /// Writes "reg/<name>.syncplugin" with this text.
    void WriteRegistration(const QString& name, const QByteArray& text);
    void RegisterResolver(const QString& module, const QString& fileTypes);
    void RegisterLayout(const QString& module, const QString& fileTypes);
    /// The plug-in with this module; fails the test when there is none.
    FileLink::Plugin& Find(const QString& module);
    /// The modules of these plug-ins.
    static QStringList Modules(const QList<FileLink::Plugin*>& plugins);

    FileTree tree;
    LogCapture log;
    PluginCallLog calls;
    FileLink::PluginManager manager;

private:
    // Registration is read in the order of the directory; a folder for each file fixes it.
    void AddRegistration(const QByteArray& text);
    int m_registrations = 0;
};

} // namespace Halvern::Test
