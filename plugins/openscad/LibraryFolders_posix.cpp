// SPDX-License-Identifier: Apache-2.0

#include "LibraryFolders.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace Halvern::Formats::OpenScad::Platform {

std::vector<std::filesystem::path> LibraryFolders()
{
    std::vector<std::filesystem::path> folders;
    if (const char* listed = std::getenv("OPENSCADPATH")) {
        std::string_view rest = listed;
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find(':'), rest.size());
            folders.emplace_back(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    if (const char* home = std::getenv("HOME"))
        folders.push_back(std::filesystem::path(home) / ".local/share/OpenSCAD/libraries");
    folders.emplace_back("/usr/share/openscad/libraries");
    folders.emplace_back("/usr/local/share/openscad/libraries");
    return folders;
}

} // namespace Halvern::Formats::OpenScad::Platform
