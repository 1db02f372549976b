// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Halvern::PluginKit {

// Links that are written as URIs. Text is UTF-8. No function fails: what is no URI is taken for the
// path that it looks like. Only a lack of memory throws.

/// True when a uri names a file: not when it is empty, a mere ":" or fragment, embedded data, or
/// has a scheme other than "file".
bool IsLinkUri(std::string_view uri);

/// True when a uri begins with "file:", in whatever letters.
bool IsFileUri(std::string_view uri);

/// The path that a uri names, for a document in `folder`. Percent-encoding is taken off, unless
/// only a file with the raw text as its name exists: some exporters forget to encode. Backslashes
/// are slashes, as programs for Windows have it, unless something is named with them.
///
///     textures/H%C3%B6he.png   textures/Höhe.png
///     textures\wood.png        textures/wood.png
///     file:///D:/lib/wood.png  D:/lib/wood.png
///
/// Requires: IsLinkUri(uri).
std::string PathOfUri(std::string_view uri, const std::filesystem::path& folder);

/// The uri for a path: a relative reference, or for an absolute path a "file:" URI. ASCII without
/// characters that JSON would have to escape.
std::string UriOfPath(std::string_view path);

} // namespace Halvern::PluginKit
