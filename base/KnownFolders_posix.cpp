// SPDX-License-Identifier: Apache-2.0

#include "base/KnownFolders.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include <pwd.h>
#include <unistd.h>

namespace Halvern::Base {

std::filesystem::path ProgramFile()
{
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

std::filesystem::path CommonDataFolder()
{
    return "/usr/share";
}

std::filesystem::path RoamingDataFolder()
{
    return {};
}

std::filesystem::path HomeFolder()
{
    return EnvironmentPath("HOME");
}

std::filesystem::path AccountHomeFolder()
{
    std::array<char, 16384> texts{};
    passwd entry = {};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found);
    return found ? std::filesystem::path(found->pw_dir) : std::filesystem::path();
}

std::filesystem::path EnvironmentPath(const std::string& variable)
{
    const char* const value = std::getenv(variable.c_str());
    return value ? std::filesystem::path(value) : std::filesystem::path();
}

std::vector<std::filesystem::path> EnvironmentPaths(const std::string& variable)
{
    std::vector<std::filesystem::path> paths;
    const char* const value = std::getenv(variable.c_str());
    for (std::string_view rest = value ? value : ""; !rest.empty();) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        paths.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return paths;
}

} // namespace Halvern::Base
