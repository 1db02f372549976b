// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LinkedFiles.h"

#include <functional>

namespace Halvern::Formats::Layout {

/// Puts files with bonds together under their own names: a companion has the place relative to the
/// file that finds it that it has in the source; members of a set are in one folder. Files that the
/// import itself placed stay. A companion with the base name of its owner follows when the owner is
/// imported under another name. Requires: every file has a target.
void PlaceGroups(LinkedFiles& linked);

/// Whether something stands at a path of the target.
using Exists = std::function<bool(const TreePath&)>;

/// Moves what was found to be in the way. None of a group can get another name: the whole group,
/// its owner included, goes to a new folder "name (2)", named after the first of the group.
///
///     Demo/board.kicad_pro   ->  Demo/board (2)/board.kicad_pro
///     Demo/board.kicad_sch   ->  Demo/board (2)/board.kicad_sch
///
/// A file whose target another file of the import has goes, with the files of its source folder, to
/// a folder with the name of the top file: Demo/tex/a.png -> Demo/two/tex/a.png.
void MoveWhatIsInTheWay(LinkedFiles& linked, const Exists& exists);

} // namespace Halvern::Formats::Layout
