// SPDX-License-Identifier: Apache-2.0

#include "corsync/Plugins.h"

#include <QtCore/QSet>

namespace Halvern::Jobs {

using FileLink::FileLinkManager;
using FileLink::PluginDescription;

QList<RegistrationFault> ListRegistrationFaults(const Session&)
{
    FileLinkManager* manager = FileLinkManager::GetInstance();
    QSet<QString> files, modules;
    for (const PluginDescription& plugin : manager->GetPlugins()) {
        files.insert(plugin.registrationFile);
        modules.insert(plugin.module);
    }
    QList<RegistrationFault> faults;
    for (const FileLink::Problem& problem : manager->GetRegistrationProblems())
        faults.append({problem.file, problem.plugin, problem.text,
                       !files.contains(problem.file) && !modules.contains(problem.plugin)});
    return faults;
}

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
