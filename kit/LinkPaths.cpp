// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/LinkPaths.h"

#include "kit/NamedThings.h"
#include "kit/PlatformFile.h"
#include "pluginkit/FilePaths.h"

#include <algorithm>

namespace Halvern::PluginKit {

namespace {

/// True where a backslash is a letter and something is named with it.
bool IsNamedWithBackslashes(std::string_view path, const std::filesystem::path& folder)
{
    return std::filesystem::path::preferred_separator != '\\' && NamesAnything(path, folder);
}

} // namespace

bool NamesAnything(std::string_view path, const std::filesystem::path& folder)
{
    return path.find('\0') == std::string_view::npos && Platform::Exists(PathIn(folder, path));
}

bool NamesFolder(std::string_view path, const std::filesystem::path& folder)
{
    if (path.find('\0') != std::string_view::npos)
        return false;
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return name.empty() || name == "." || name == ".." || Platform::IsFolder(PathIn(folder, path));
}

bool NamesExistingFile(std::string_view path, const std::filesystem::path& folder)
{
    return path.find('\0') == std::string_view::npos && Platform::IsFile(PathIn(folder, path));
}

std::string WithSlashes(std::string path, const std::filesystem::path& folder)
{
    if (path.find('\\') != std::string::npos && !IsNamedWithBackslashes(path, folder))
        std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string_view WithoutDot(std::string_view path)
{
    while (path.starts_with("./"))
        path.remove_prefix(2);
    return path;
}

bool IsSamePath(std::string_view a, std::string_view b)
{
    return WithoutDot(a) == WithoutDot(b);
}

} // namespace Halvern::PluginKit
