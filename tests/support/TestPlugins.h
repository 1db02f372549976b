// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Test {

/// The folder that holds the test plug-ins' libraries, and their file names. What the plug-ins do
/// stands in their sources in plugins/.
QString TestPluginFolder();
QString TestResolverModule();
QString TestLayoutModule();
QString TestTalkerModule();

/// A registration file's text for one plug-in. `service` is "FileLayout" or "FileLinkResolver".
QByteArray Registration(const QString& module, const QString& service, const QString& fileTypes);

/// Writes registration files for the types "tlk" and "tasm" into a folder of the tree:
///
///     RegisterTestResolver(tree, u"plugins"_s);
///     manager->AddPluginRegistrationFolders({tree.Path(u"plugins"_s)});
///     manager->AddPluginSearchPaths({TestPluginFolder()});
void RegisterTestResolver(FileTree& tree, const QString& folder);
void RegisterTestLayout(FileTree& tree, const QString& folder);
/// For the type "talk".
void RegisterTestTalker(FileTree& tree, const QString& folder);

/// While it lives, tells the test resolver to misbehave: "norepath", "lies" ...
class PluginOrders
{
public:
    explicit PluginOrders(const QByteArray& words);
    ~PluginOrders();
    PluginOrders(const PluginOrders&) = delete;
    PluginOrders& operator=(const PluginOrders&) = delete;
};

/// Collects the calls that test plug-ins get while it lives, in order.
class PluginCallLog
{
public:
    PluginCallLog();
    ~PluginCallLog();
    PluginCallLog(const PluginCallLog&) = delete;
    PluginCallLog& operator=(const PluginCallLog&) = delete;

    /// For example "GetFileLinks /tmp/x/a.tlk", "RepathFileLinks /tmp/x/a.tlk [1=b.tlk]".
    QStringList Calls() const;
    void Clear();

private:
    FileTree m_tree;
};

} // namespace Halvern::Test
