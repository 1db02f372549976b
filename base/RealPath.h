// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>

namespace Halvern::Base {

// Where a path leads on the disk. Nothing is opened for reading, so a pipe or a device does not
// block; nothing fails, and only a lack of memory throws. Safe to call from any thread.

/// The absolute path of what exists, with every symbolic link and junction in it followed; on
/// Windows with long names in place of short ones. Empty when it leads nowhere, or through a folder
/// that may not be searched.
std::filesystem::path RealPath(const std::filesystem::path& path);

/// False when `path` is its folder's real path and its own name, so that nobody need ask for its
/// real path. Windows has more ways to name a file (short names, trailing dots): there always true.
bool MayLeadElsewhere(const std::filesystem::path& path);

} // namespace Halvern::Base
