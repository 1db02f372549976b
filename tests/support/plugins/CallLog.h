// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/FileLinkInfo.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

// What test plug-ins share. Header-only: every plug-in is a library of its own.
namespace Halvern::Test {

/// Names the file to which test plug-ins append a line for each call; unset, they write none.
inline constexpr char CallLogVariable[] = "CORSYNC_TEST_PLUGIN_CALLS";

inline void LogCall(const std::string& line)
{
    if (const char* file = std::getenv(CallLogVariable))
        std::ofstream(file, std::ios::app | std::ios::binary) << line << '\n';
}

inline std::string ToUtf8(const std::filesystem::path& path)
{
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

inline std::basic_string<SyncPlugin::WideChar> ToWide(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()))
        .string<SyncPlugin::WideChar>();
}

} // namespace Halvern::Test
