// SPDX-License-Identifier: Apache-2.0

#include "Sessions.h"

namespace Halvern::Cli {

Jobs::Session OpenSession(const Jobs::Places& places, const CommonOptions& common,
                          Jobs::SessionUse use)
{
    SyncServices::ServicesSettings settings = Jobs::ResolveSettings(places, use);
    if (!common.isolate.isEmpty())
        settings.isolatePlugins = common.isolate;
    return Jobs::Session(settings, common.pluginPaths, use);
}

std::unique_ptr<Jobs::Session> OpenTemporarySession(const CommonOptions& common)
{
    SyncServices::ServicesSettings settings;
    if (!common.isolate.isEmpty())
        settings.isolatePlugins = common.isolate;
    return Jobs::Session::Temporary(common.pluginPaths, Jobs::PluginOptionsOf(settings));
}

} // namespace Halvern::Cli
