// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string_view>

namespace Halvern::PluginKit {

/// True when a link's path is that of anything that is there, seen from a folder. A name with a NUL
/// does not reach the system, which would take only what is before it.
bool NamesAnything(std::string_view path, const std::filesystem::path& folder);

} // namespace Halvern::PluginKit
