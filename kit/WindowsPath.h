// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/Utf.h"

namespace Halvern::PluginKit {

/// What Windows makes of paths, as rules on their text: they hold wherever the text is looked at.

/// Names a server or a device: two separators and a name.
bool IsNetworkPath(WideView path);

/// An absolute path without "." and "..", with backslashes, as functions of the system take it.
/// They refuse 260 characters and more, and a folder from 248 on, unless the path has a prefix.
///
///     "D:\a.prt" stays, and one too long gives "\\?\D:\...\a.prt" or "\\?\UNC\server\share\..."
WideString WindowsApiPath(WideView path);

/// The name of an entry of a folder. Nothing for the folder itself, the one above it, and a name
/// with a lone surrogate: no link can name that file.
std::optional<std::string> NameOfEntry(WideView name);

} // namespace Halvern::PluginKit
