// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Halvern::Base {

// Folders that the system names. Empty when it does not. Nothing is made. Not to be called while
// another thread changes the environment.

/// The file of the running program. On Windows without a prefix "\\?\" by which it was started.
std::filesystem::path ProgramFile();
/// The machine's folder for data of all users: CSIDL_COMMON_APPDATA, on POSIX /usr/share.
std::filesystem::path CommonDataFolder();
/// Windows: the user's folder for settings that travel with the account. POSIX has none such.
std::filesystem::path RoamingDataFolder();
/// The user's own folder, as the environment names it.
std::filesystem::path HomeFolder();
/// The home folder that the account of this process was made with, whatever the environment says.
std::filesystem::path AccountHomeFolder();
/// What an environment variable names.
std::filesystem::path EnvironmentPath(const std::string& variable);
/// The same for a list, separated by ";" on Windows and ":" on POSIX.
std::vector<std::filesystem::path> EnvironmentPaths(const std::string& variable);

} // namespace Halvern::Base
