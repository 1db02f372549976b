// SPDX-License-Identifier: Apache-2.0

#include "LibraryFolders.h"

#include "KitNames.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/LinkPaths.h"

#include <algorithm>

namespace Halvern::Formats::OpenScad {

std::vector<std::filesystem::path> LibraryFolders()
{
    // A relative one would depend on the folder that some program was started in.
    std::vector<std::filesystem::path> folders = Platform::LibraryFolders();
    std::erase_if(folders,
                  [](const std::filesystem::path& folder) { return !IsAbsolutePath(folder); });
    return folders;
}

bool IsInstalledLibrary(std::string_view name, const std::vector<std::filesystem::path>& folders)
{
    return name.starts_with("MCAD/") ||
           std::any_of(folders.begin(), folders.end(), [&](const std::filesystem::path& folder) {
               return NamesExistingFile(name, folder);
           });
}

} // namespace Halvern::Formats::OpenScad
