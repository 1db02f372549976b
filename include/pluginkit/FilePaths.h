// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string_view>

namespace Halvern::PluginKit {

// What the standard library does with paths; but where paths may name a server, it takes those for
// paths of the current drive. Nothing here asks the disk; only a lack of memory throws.

bool IsAbsolutePath(const std::filesystem::path& path);
/// The file that UTF-8 text names, seen from a folder.
std::filesystem::path PathIn(const std::filesystem::path& folder, std::string_view path);
/// Without "." and "..", as far as the text tells.
std::filesystem::path NormalPath(const std::filesystem::path& path);

} // namespace Halvern::PluginKit
