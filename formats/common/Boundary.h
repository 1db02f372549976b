#pragma once

#include "Utf.h"

#include "syncplugin/IFileLinkResolver.h"

#include <functional>
#include <string_view>

namespace Halvern::Formats {

/// Runs what a resolver was called for. Whatever it throws ends here: the reason is written to the
/// context's logger as "Failed to <action> <file>: <reason> (byte <position>)" and the result is
/// false.
bool RunGuarded(SyncPlugin::IFileLinkResolverContext* context, std::string_view action,
                const SyncPlugin::WideChar* file, const std::function<void()>& work) noexcept;

} // namespace Halvern::Formats
