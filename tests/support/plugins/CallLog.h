// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/FileLinkInfo.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

// What test plug-ins share. Header-only: every plug-in is a library of its own.
namespace Halvern::Test {

/// Names the file to which test plug-ins append a line for each call; unset, they write none.
inline constexpr char CallLogVariable[] = "CORSYNC_TEST_PLUGIN_CALLS";

/// Holds words that tell test plug-ins to misbehave in every file; see TestResolverPlugin.cpp.
inline constexpr char OrdersVariable[] = "CORSYNC_TEST_PLUGIN_ORDERS";

inline bool IsTold(const std::string& word)
{
    const char* const orders = std::getenv(OrdersVariable);
    std::istringstream words(orders ? orders : "");
    return std::find(std::istream_iterator<std::string>(words), {}, word) !=
           std::istream_iterator<std::string>();
}

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
