// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/FilePaths.h"

#include "kit/PlatformFile.h"
#include "pluginkit/Utf.h"

namespace Halvern::PluginKit {

bool IsAbsolutePath(const std::filesystem::path& path)
{
    return path.is_absolute() || Platform::IsNetworkPath(path);
}

std::filesystem::path PathIn(const std::filesystem::path& folder, std::string_view path)
{
    std::filesystem::path given = PathFromUtf8(path);
    return Platform::IsNetworkPath(given) ? given : folder / given;
}

std::filesystem::path NormalPath(const std::filesystem::path& path)
{
    std::filesystem::path normal = path.lexically_normal();
    if (!Platform::IsNetworkPath(path))
        return normal;
    // One of the two separators is gone.
    std::filesystem::path::string_type text(1, std::filesystem::path::preferred_separator);
    return text += normal.native();
}

} // namespace Halvern::PluginKit
