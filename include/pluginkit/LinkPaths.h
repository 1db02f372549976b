// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Halvern::PluginKit {

// Paths of links as UTF-8 text, absolute or relative to the folder of the file that holds the link.
// What cannot be looked at on the disk is not there; only a lack of memory throws.

/// True when a path can only be a folder's: such a name is no link.
bool NamesFolder(std::string_view path, const std::filesystem::path& folder);

/// True when a path is that of a file that is there.
bool NamesExistingFile(std::string_view path, const std::filesystem::path& folder);

/// A path that a program for Windows may have written, with slashes. Not on Windows, a backslash is
/// a letter where something in `folder` is named with it.
std::string WithSlashes(std::string path, const std::filesystem::path& folder);

/// The path without a leading "./".
std::string_view WithoutDot(std::string_view path);

/// True when both paths are the same text apart from a leading "./".
bool IsSamePath(std::string_view a, std::string_view b);

} // namespace Halvern::PluginKit
