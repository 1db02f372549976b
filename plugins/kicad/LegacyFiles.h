// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "StoredPath.h"

#include "KitNames.h"
#include "pluginkit/InputFile.h"

#include <string>
#include <vector>

namespace Halvern::Formats::Kicad {

inline constexpr std::size_t MaxLegacyLinks = 100'000;

// Files of KiCad 5 and earlier. Other programs use the extensions, too: what is no file of KiCad
// holds no links.

/// The libraries that a legacy schematic lists at its beginning, without ".lib": those that its
/// project names, so that they matter only where the project is lost.
std::vector<std::string> LibrariesOfLegacySchematic(const InputFile& file);

bool IsLegacySchematic(const InputFile& file);

/// The sheets, data sheets and files of the simulator that a legacy schematic names:
///
///     $Sheet
///     U 5A1B2C3D
///     F1 "sub/power.sch" 60
///     $EndSheet
///
/// Throws FormatError for a schematic that does not end.
std::vector<StoredPath> FindInLegacySchematic(const InputFile& file);

/// The libraries of symbols and the drawing sheets that a legacy project names:
///
///     LibDir=../lib
///     LibName1=own
///     PageLayoutDescrFile=frame.kicad_wks
///
/// Libraries are looked for in the folder of the project, then in those of LibDir; a mere name that
/// is in neither is that of an installed one.
std::vector<StoredPath> FindInLegacyProject(const InputFile& file);

} // namespace Halvern::Formats::Kicad
