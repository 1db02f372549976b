// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Halvern::Formats::Blender {

/// The path that a text of a .blend file names: "//" at its beginning stands for the file's folder,
/// and Windows wrote "\" between names, which Blender reads everywhere.
///
///     //..\lib\Höhe.blend   ../lib/Höhe.blend
///     \\server\lib\a.png    //server/lib/a.png
std::string PathOfText(std::string_view text);

/// The text for a path, with "//" in front of one that is relative.
std::string TextOfPath(std::string_view path);

} // namespace Halvern::Formats::Blender
