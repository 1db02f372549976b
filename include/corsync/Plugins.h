// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Export.h"
#include "corsync/Session.h"

#include "filelink/FileLinkManager.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Jobs {

enum class PluginState
{
    NotTried,
    Loads,
    Fails,
};

struct PluginStatus
{
    FileLink::PluginDescription plugin;
    PluginState state = PluginState::NotTried;
    /// Why it does not load.
    QString error;
};

/// The registered plug-ins, in the order in which they are asked. With `load` each library is
/// loaded and its service created once.
CORSYNCJOBS_EXPORT QList<PluginStatus> ListPlugins(const Session& session, bool load);

} // namespace Halvern::Jobs
