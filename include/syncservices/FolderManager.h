// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"
#include "syncservices/Global.h"
#include "syncservices/ServicesSettings.h"
#include "syncservices/SyncDatabase.h"

#include <QtCore/QString>

#include <memory>

namespace Halvern::SyncFolderManagerLib {

/// Login state, cloud cache folder and sync database: one object per process.
///
/// `Configure`, `Initialize` and `Uninitialize` belong to the thread that starts and stops the
/// program; the members may be called from any thread in between. A failure is a result or
/// GetLastError(), never an exception.
class SYNCSERVICES_EXPORT FolderManager
{
public:
    /// Settings for the next Initialize. Without it the user's settings file is read (and made,
    /// when there is none).
    static void Configure(const SyncServices::ServicesSettings& settings);
    /// Makes the object, the cloud cache folder and the database. A failure leaves
    /// GetSyncDatabase() empty and GetLastError() telling why. A second call does nothing.
    static void Initialize();
    /// Ends the object; settings given by Configure are forgotten. Without Initialize it does
    /// nothing.
    static void Uninitialize();
    /// Null when not initialised. The library owns the object; it lives until Uninitialize.
    static FolderManager* GetInstance();

    /// True when the settings say so. False also when the settings file could not be read: nothing
    /// must be brought to a folder that the user did not choose.
    bool IsLoggedIn() const;
    /// The cleaned, absolute cloud cache folder. With `create` it is made when missing; whether
    /// that worked is for the caller to see. Empty when none is configured, or when it could not be
    /// made at the start.
    QString GetCloudCacheFolderPath(bool create) const;
    /// True for the cloud cache folder and every path below it, also when reached through a
    /// symbolic link or in another letter case, unless that is another folder. Relative paths and
    /// the empty path are not in it.
    bool IsCloudCacheFolderPath(const QString& path) const;
    /// The form of a path in the cloud cache folder that names it below the configured folder,
    /// cleaned. Other paths come back cleaned.
    QString ConvertCloudCacheFolderPath(const QString& path,
                                        SyncServices::Global::CloudCacheFolderPathType type) const;
    /// Null when the database could not be opened. Who keeps the pointer keeps the database open,
    /// beyond Uninitialize as well.
    std::shared_ptr<SyncServices::SyncDatabase> GetSyncDatabase() const;
    /// Puts the host's own store (or a decorated one) in place of the embedded database, shared
    /// until the next call or Uninitialize. Null takes the database away.
    void SetSyncDatabase(std::shared_ptr<SyncServices::SyncDatabase> database);
    /// The root item of the cloud cache folder when `path` is that folder or lies in it, made on
    /// first use; null otherwise, without a database and when it could not be written. One object
    /// for all callers, which must not change it.
    std::shared_ptr<SyncServices::SyncItem> GetSyncRootFolder(const QString& path);
    /// The cloud path of a local path in the cloud cache folder, such as "/Demo/scene.gltf"; with
    /// `withRoot` the cloud root stands in front. True when the path has one; false, `cloudPath`
    /// empty, for paths outside.
    [[nodiscard]] bool GetCloudPath(const QString& localPath, bool withRoot,
                                    QString& cloudPath) const;

    /// What Initialize started with; does not change until Uninitialize, which ends the reference.
    const SyncServices::ServicesSettings& GetSettings() const;
    /// Why Initialize failed, one sentence; empty when it did not.
    QString GetLastError() const;

private:
    struct State;
    FolderManager();
    ~FolderManager();
    FolderManager(const FolderManager&) = delete;
    FolderManager& operator=(const FolderManager&) = delete;

    std::unique_ptr<State> m_state;
};

} // namespace Halvern::SyncFolderManagerLib
