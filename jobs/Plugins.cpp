// SPDX-License-Identifier: Apache-2.0

#include "corsync/Plugins.h"

namespace Halvern::Jobs {

using FileLink::FileLinkManager;
using FileLink::PluginDescription;

QList<PluginStatus> ListPlugins(const Session&, bool load)
{
    FileLinkManager* manager = FileLinkManager::GetInstance();
    QList<PluginStatus> plugins;
    for (const PluginDescription& plugin : manager->GetPlugins()) {
        PluginStatus status{plugin, PluginState::NotTried, {}};
        if (load)
            status.state = manager->LoadPlugin(plugin.module, &status.error) ? PluginState::Loads
                                                                             : PluginState::Fails;
        plugins.append(status);
    }
    return plugins;
}

} // namespace Halvern::Jobs
