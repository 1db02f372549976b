// SPDX-License-Identifier: Apache-2.0

#include "corsync/Plugins.h"

#include <QtCore/QSet>

#include <utility>

namespace Halvern::Jobs {

using FileLink::FileLinkManager;
using FileLink::PluginDescription;

QList<RegistrationFault> ListRegistrationFaults(const Session&)
{
    FileLinkManager* manager = FileLinkManager::GetInstance();
    const QStringList complete = manager->GetCompleteRegistrationFiles();
    QSet<QString> registering;
    for (const PluginDescription& plugin : manager->GetPlugins())
        registering.insert(plugin.registrationFile);
    QSet<std::pair<QString, QString>> warnings;
    QList<RegistrationFault> faults;
    for (const FileLink::Problem& problem : manager->GetRegistrationProblems()) {
        const bool isBroken = !complete.contains(problem.file);
        const std::pair warning(problem.plugin, problem.text);
        // A copy of a file in another folder has nothing new to say.
        if (!isBroken && !registering.contains(problem.file) && warnings.contains(warning))
            continue;
        if (!isBroken)
            warnings.insert(warning);
        faults.append({problem.file, problem.plugin, problem.text, isBroken});
    }
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
