// SPDX-License-Identifier: Apache-2.0

#include "LibraryFolders.h"

#include "KitNames.h"
#include "base/KnownFolders.h"
#include "base/System.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/LinkPaths.h"

#include <algorithm>
#include <utility>

namespace Halvern::Formats::OpenScad {

namespace {

/// Where installers put them, and where the user does.
std::vector<std::filesystem::path> StandardFolders(Base::System system)
{
    const std::filesystem::path home = Base::HomeFolder();
    switch (system) {
    case Base::System::Posix:
        return {home / ".local/share/OpenSCAD/libraries", "/usr/share/openscad/libraries",
                "/usr/local/share/openscad/libraries"};
    case Base::System::Windows:
        return {home / "Documents" / "OpenSCAD" / "libraries",
                Base::EnvironmentPath("ProgramFiles") / "OpenSCAD" / "libraries"};
    }
    return {};
}

} // namespace

std::vector<std::filesystem::path> LibraryFolders()
{
    std::vector<std::filesystem::path> folders = Base::EnvironmentPaths("OPENSCADPATH");
    for (std::filesystem::path& folder : StandardFolders(Base::ThisSystem))
        folders.push_back(std::move(folder));
    // A relative one would depend on the folder that some program was started in.
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
