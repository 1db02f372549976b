// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"

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

private:
    struct State;
    SyncManager();
    ~SyncManager();
    SyncManager(const SyncManager&) = delete;
    SyncManager& operator=(const SyncManager&) = delete;

    std::unique_ptr<State> m_state;
};

} // namespace Halvern::SyncServices
