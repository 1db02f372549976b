// SPDX-License-Identifier: Apache-2.0

#include "base/KnownFolders.h"

#include "base/WindowsApi.h"
#include "base/WindowsApiPath.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include <shlobj.h>

namespace Halvern::Base {

namespace {

std::filesystem::path SpecialFolder(int folder, bool create)
{
    std::array<wchar_t, MAX_PATH> path{};
    ::SHGetSpecialFolderPathW(nullptr, path.data(), folder, create);
    return path.data();
}

std::wstring_view Environment(const std::string& variable)
{
    const wchar_t* const value = ::_wgetenv(std::wstring(variable.begin(), variable.end()).c_str());
    return value ? value : L"";
}

} // namespace

std::filesystem::path ProgramFile()
{
    std::wstring program(32768, L'\0');
    const DWORD size = ::GetModuleFileNameW(nullptr, program.data(), DWORD(program.size()));
    program.resize(size < program.size() ? size : 0);
    return ToWide(WithoutApiPrefix(FromWide(program)));
}

std::filesystem::path CommonDataFolder()
{
    return SpecialFolder(CSIDL_COMMON_APPDATA, true);
}

std::filesystem::path RoamingDataFolder()
{
    return SpecialFolder(CSIDL_APPDATA, false);
}

std::filesystem::path HomeFolder()
{
    return EnvironmentPath("USERPROFILE");
}

std::filesystem::path AccountHomeFolder()
{
    return SpecialFolder(CSIDL_PROFILE, false);
}

std::filesystem::path EnvironmentPath(const std::string& variable)
{
    return Environment(variable);
}

std::vector<std::filesystem::path> EnvironmentPaths(const std::string& variable)
{
    std::vector<std::filesystem::path> paths;
    for (std::wstring_view rest = Environment(variable); !rest.empty();) {
        const std::size_t end = std::min(rest.find(L';'), rest.size());
        paths.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return paths;
}

} // namespace Halvern::Base
