// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/ServicesSettings.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Cli {

/// The services and the module, running for as long as the object lives. Importers must have ended
/// before it does.
class Session
{
public:
    /// `pluginPaths` are searched before the default folders. Throws CommandError: Usage for a
    /// plug-in path that is no folder, Failed without a cloud cache folder, PluginOrDatabase when
    /// the database cannot be opened.
    Session(const SyncServices::ServicesSettings& settings, const QStringList& pluginPaths);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

/// Removes, when it ends, the empty folders down to `path` that were missing when it began.
class FolderCleanup
{
public:
    explicit FolderCleanup(const QString& path);
    ~FolderCleanup();
    FolderCleanup(const FolderCleanup&) = delete;
    FolderCleanup& operator=(const FolderCleanup&) = delete;

private:
    /// Deepest first.
    QStringList m_missing;
};

} // namespace Halvern::Cli
