// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LinkedFiles.h"

#include <optional>

namespace Halvern::Formats::Layout {

/// Gives every file without a target its place below the folder of the top file's target, so that
/// the shape of the source tree stays. With /home/me/shed/scene/a.gltf imported as Demo/a.gltf:
///
///     beside or below the top file    shed/scene/parts/b.bin    Demo/parts/b.bin
///     elsewhere in the project        shed/lib/c.png            Demo/lib/c.png
///     from any other place            /usr/share/wood/d.png     Demo/wood/d.png
///
/// The project is the common folder of the top file and of what it links, as far as that folder is
/// one of a project: not a drive, the home folder or one of the folders above that. When something
/// of the project has the name of something beside the top file, the project gets a folder of its
/// own: Demo/shed/lib/c.png. Files of one other place stay together in a folder that has the name
/// of that place. No two files get one place, and none leaves the folder of the top file.
void PlaceFiles(LinkedFiles& linked, const std::optional<TreePath>& home);

/// The user's home folder, as the environment names it.
std::optional<TreePath> HomeFolder();

} // namespace Halvern::Formats::Layout
