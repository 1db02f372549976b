// SPDX-License-Identifier: Apache-2.0

#include "kit/WindowsPath.h"

namespace Halvern::PluginKit {

namespace {

// From this length on a folder cannot be made without the prefix: it leaves room for a short name.
constexpr std::size_t LongPath = 248;

WideString Ascii(std::string_view text)
{
    return {text.begin(), text.end()};
}

bool IsSeparator(SyncPlugin::WideChar c)
{
    return c == SyncPlugin::WideChar('/') || c == SyncPlugin::WideChar('\\');
}

/// Has the prefix, or is the path of a device.
bool IsTakenAsItIs(WideView path)
{
    return path.starts_with(Ascii("\\\\?\\")) || path.starts_with(Ascii("\\\\.\\"));
}

} // namespace

bool IsNetworkPath(WideView path)
{
    return path.size() > 2 && IsSeparator(path[0]) && IsSeparator(path[1]) && !IsSeparator(path[2]);
}

WideString WindowsApiPath(WideView path)
{
    if (path.size() < LongPath || IsTakenAsItIs(path))
        return WideString(path);
    if (IsNetworkPath(path))
        return Ascii("\\\\?\\UNC") + WideString(path.substr(1));
    return Ascii("\\\\?\\") + WideString(path);
}

std::optional<std::string> NameOfEntry(WideView name)
{
    if (name == Ascii(".") || name == Ascii(".."))
        return std::nullopt;
    return ToUtf8(name);
}

} // namespace Halvern::PluginKit
