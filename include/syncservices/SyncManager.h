// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"

#include <memory>

namespace Halvern::SyncServices {

/// Whether the cloud cache folder is synced, and copies of files about to be replaced: one object
/// per process, started after FolderManager and stopped before it.
class SYNCSERVICES_EXPORT SyncManager
{
public:
    static void Initialize();
    static void Uninitialize();
    /// Null when not initialised.
    static SyncManager* GetInstance();

    bool IsCloudCacheFolderSyncEnabled() const;
    /// Keeps a copy of the file at `path` (zero-terminated, as wide characters) in the base store,
    /// one per path and content. Symbolic links are not followed. False when the file could not be
    /// kept; the file itself is never touched.
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
