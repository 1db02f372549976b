// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/BaseStore.h"
#include "syncservices/Export.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <functional>
#include <memory>

namespace Halvern::SyncServices {

/// Whether the cloud cache folder is synced, and copies of files about to be replaced: one object
/// per process, started after FolderManager and stopped before it, by the thread that starts and
/// stops the program. Its members may be called from any thread in between.
class SYNCSERVICES_EXPORT SyncManager
{
public:
    /// Reads FolderManager's settings. A second call does nothing.
    static void Initialize();
    /// Without Initialize it does nothing. Copies that were kept stay.
    static void Uninitialize();
    /// Null when not initialised. The library owns the object; it lives until Uninitialize.
    static SyncManager* GetInstance();

    /// True when the settings say so; false without FolderManager.
    bool IsCloudCacheFolderSyncEnabled() const;
    /// Keeps a copy of the file at `path` (zero-terminated, as wide characters) in the base store,
    /// one per path and content. Symbolic links are not followed. True when a copy is there; false
    /// when the file could not be kept, is larger than the store's limit, or nothing is to be kept.
    /// The file itself is never touched.
    bool SaveBaseFile(const wchar_t* path);

    /// The same for a host that replaces the file only when this succeeds: the copy is on the disk,
    /// and is what the file was at one moment. False with the reason in `error` (may be null), a
    /// text that can follow "could not be kept: ".
    ///
    /// `goesOn`, if any, is asked many times while the file is read; what it ends leaves nothing.
    [[nodiscard]] bool SaveVersion(const QString& path, QString* error,
                                   const std::function<bool()>& goesOn = {});
    /// Nothing is written.
    BaseStoreStatus GetBaseStoreStatus() const;
    /// A job that replaces several files: what is saved from BeginRun to the EndRun that belongs to
    /// it is not removed from the base store to make room, by this process or another one, unless
    /// the process ends before. A save that finds no room then fails. Runs may overlap; what they
    /// saved may go when the last one of the process has ended. See BaseStoreRun.
    void BeginRun();
    void EndRun();
    /// What the base store holds of the file at `path`, which need not exist: newest first.
    QList<StoredVersion> GetVersions(const QString& path) const;
    /// Writes a version to `target`, which must not exist, with the rights of a new file. False
    /// with the reason in `error` (may be null), and nothing at `target`, also when the copy is
    /// damaged.
    [[nodiscard]] bool WriteVersion(const StoredVersion& version, const QString& target,
                                    QString* error);

private:
    struct State;
    SyncManager();
    ~SyncManager();
    SyncManager(const SyncManager&) = delete;
    SyncManager& operator=(const SyncManager&) = delete;

    std::unique_ptr<State> m_state;
};

/// A run of the SyncManager that there is when this is made, for as long as both live.
class BaseStoreRun
{
public:
    BaseStoreRun()
    {
        if (SyncManager* const manager = SyncManager::GetInstance())
            manager->BeginRun();
    }
    ~BaseStoreRun()
    {
        if (SyncManager* const manager = SyncManager::GetInstance())
            manager->EndRun();
    }
    BaseStoreRun(const BaseStoreRun&) = delete;
    BaseStoreRun& operator=(const BaseStoreRun&) = delete;
};

} // namespace Halvern::SyncServices
