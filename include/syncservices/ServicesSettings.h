// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::SyncServices {

/// What the services need to know about the user and the machine. A host fills one in and passes it
/// to FolderManager::Configure, or loads one from a settings file. A plain value, used from one
/// thread at a time.
struct SYNCSERVICES_EXPORT ServicesSettings
{
    /// Absolute path of the cloud cache folder; created when the services start.
    QString cloudCacheFolder;
    /// Absolute path of the SQLite file, or ":memory:".
    QString databaseFile;
    /// Milliseconds that an operation waits while another process writes to the database.
    int databaseBusyTimeout = 10000;
    /// Where copies of replaced files go; empty: beside the database, its name with ".base" added.
    QString baseStoreFolder;
    /// Size limit of that folder in bytes; the oldest copies go first. 0 keeps no copies.
    qint64 baseStoreLimit = qint64(1) << 30;
    /// For people; nothing is decided by it.
    QString userName;
    /// Number of the signed-in user's account: items and copy history are kept apart by it.
    int authenticationConfigurationId = 1;
    /// Number of the product, and the name of the program, that items are written for; kept with
    /// each item for the sync service.
    int productConfigurationId = 1;
    QString sourceConsumerId;
    /// False keeps every import from starting.
    bool loggedIn = true;
    /// False keeps every import from starting, too: the folder is not synced.
    bool cloudCacheFolderSyncEnabled = true;
    /// File types whose links are handled for files that already lie in the cloud cache folder;
    /// empty means all.
    QStringList supportedFileTypes;
    /// Absolute paths of folders that linked files may come from although they lie in a place that
    /// is refused otherwise, such as a hidden folder of the home folder. The job library asks.
    QStringList allowedFolders;
    /// Which plug-ins run in a process of their own: "auto" (those that do not come with the
    /// product), "always" or "never". The job library asks.
    QString isolatePlugins = QStringLiteral("auto");
    /// How long one call into such a plug-in may take, in seconds, and how much memory its process
    /// may have, in bytes. 0: no limit.
    int pluginTimeLimit = 120;
    qint64 pluginMemoryLimit = qint64(4) << 30;
    /// Folder of the sync service's program; empty: the folder of the running program.
    QString serviceFolder;
    /// What stands in front of cloud paths where a full one is asked for.
    QString cloudRoot = QStringLiteral("/");

    /// Where copies of replaced files go; empty when nothing says so, because the database is in
    /// memory.
    QString BaseStoreFolder() const;

    /// The settings file of the current user: below XDG_CONFIG_HOME, on Windows below the roaming
    /// application data. Whether it exists is not asked.
    static QString DefaultFile();
    /// What a new user gets: `Corsync` in the home folder, the database in the user's data folder.
    static ServicesSettings Defaults();
    /// Reads `file` (INI); values that are missing take their defaults. A file that does not exist
    /// is written with the defaults. On failure `error` (may be null) names file and reason, and
    /// the defaults come back; on success it becomes empty.
    [[nodiscard]] static ServicesSettings LoadOrCreate(const QString& file, QString* error);
    /// What stands in a settings file under names that no setting has, perhaps mistyped:
    /// LoadOrCreate takes no notice of it. Empty for a file that cannot be read.
    [[nodiscard]] static QStringList UnknownKeys(const QString& file);
    /// Writes the file, making its folder. True when it is written; false with the reason in
    /// `error` (may be null) when it could not be.
    [[nodiscard]] bool Save(const QString& file, QString* error) const;
};

} // namespace Halvern::SyncServices
