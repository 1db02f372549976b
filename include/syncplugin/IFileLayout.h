// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/IFileMapping.h"
#include "syncplugin/IPluginLogger.h"

namespace Halvern::SyncPlugin {

/// What a layout may ask of the host during a call.
class IFileLayoutContext
{
public:
    virtual ~IFileLayoutContext() = default;
    /// Owned by the context.
    virtual IPluginLogger* GetLogger() = 0;
};

/// Chooses target paths for a selected file's linked files. Called from the thread that runs the
/// job. Exceptions must not leave it.
class IFileLayout
{
public:
    virtual ~IFileLayout() = default;
    /// Sets target paths on `mapping` and, through its children, on the files it links. Files left
    /// without a target get the host's default place. True when paths were assigned.
    [[nodiscard]] virtual bool AssignTargetPaths(IFileMapping* mapping,
                                                 IFileLayoutContext* context) = 0;
};

/// Made by the export "CreateSyncPluginFactory"; lives for one creation.
class ISyncPluginFactory
{
public:
    virtual ~ISyncPluginFactory() = default;
    /// A new object, owned by the host from then on, or null.
    [[nodiscard]] virtual IFileLayout* CreateFileLayout() = 0;
};

} // namespace Halvern::SyncPlugin
