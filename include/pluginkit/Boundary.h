// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/Utf.h"

#include "syncplugin/IFileLinkResolver.h"

#include <functional>
#include <string_view>

namespace Halvern::PluginKit {

/// Runs what a plug-in was called for. Whatever it throws ends here: the reason is written to the
/// logger, if there is one, as "Failed to <action> <file>: <reason> (byte <position>)" and the
/// result is false.
bool RunLogged(SyncPlugin::IPluginLogger* logger, std::string_view action,
               const SyncPlugin::WideChar* file, const std::function<void()>& work) noexcept;

/// The same with the logger of a resolver's context.
bool RunGuarded(SyncPlugin::IFileLinkResolverContext* context, std::string_view action,
                const SyncPlugin::WideChar* file, const std::function<void()>& work) noexcept;

} // namespace Halvern::PluginKit
