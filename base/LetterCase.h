// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>

namespace Halvern::Base {

/// Whether two names in a folder that differ in nothing but letter case are one name. Tells by what
/// stands in the folder, and by what the system knows of it; nothing is written. Nothing for a
/// folder that is not there, and where nothing tells.
std::optional<bool> FolderIgnoresLetterCase(const std::filesystem::path& folder);

} // namespace Halvern::Base
