// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/FileLinkInfo.h"

namespace Halvern::SyncPlugin {

/// Writes a plug-in's diagnostics into the host's log. Messages are zero-terminated, never null,
/// and written as they are. The host owns the object; a plug-in neither deletes it nor keeps it
/// beyond the call that handed it out. DO NOT CHANGE THE ORDER: it is the order of virtual slots.
class IPluginLogger
{
public:
    virtual void LogFatal(const WideChar* message) = 0;
    virtual void LogError(const WideChar* message) = 0;
    virtual void LogWarn(const WideChar* message) = 0;
    virtual void LogInfo(const WideChar* message) = 0;
    virtual void LogDebug(const WideChar* message) = 0;
    virtual void LogTrace(const WideChar* message) = 0;

protected:
    ~IPluginLogger() = default;
};

} // namespace Halvern::SyncPlugin
