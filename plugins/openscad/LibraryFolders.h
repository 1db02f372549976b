// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace Halvern::Formats::OpenScad {

/// Where OpenSCAD looks for libraries that are not beside the model: OPENSCADPATH, the user's own
/// libraries, the installed ones.
std::vector<std::filesystem::path> LibraryFolders();

/// True for the name of an installed library's file, which is no file of a project. MCAD comes with
/// OpenSCAD, wherever that is.
bool IsInstalledLibrary(std::string_view name, const std::vector<std::filesystem::path>& folders);

} // namespace Halvern::Formats::OpenScad
