// SPDX-License-Identifier: Apache-2.0

#include "LibraryFolders.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace Halvern::Formats::OpenScad::Platform {

std::vector<std::filesystem::path> LibraryFolders()
{
    std::vector<std::filesystem::path> folders;
    if (const wchar_t* listed = ::_wgetenv(L"OPENSCADPATH")) {
        std::wstring_view rest = listed;
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find(L';'), rest.size());
            folders.emplace_back(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    if (const wchar_t* home = ::_wgetenv(L"USERPROFILE"))
        folders.push_back(std::filesystem::path(home) / L"Documents" / L"OpenSCAD" / L"libraries");
    if (const wchar_t* programs = ::_wgetenv(L"ProgramFiles"))
        folders.push_back(std::filesystem::path(programs) / L"OpenSCAD" / L"libraries");
    return folders;
}

} // namespace Halvern::Formats::OpenScad::Platform
