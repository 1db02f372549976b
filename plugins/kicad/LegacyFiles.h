// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "StoredPath.h"

#include "KitNames.h"
#include "pluginkit/InputFile.h"

#include <vector>

namespace Halvern::Formats::Kicad {

inline constexpr std::size_t MaxLegacyLinks = 100'000;

// Files of KiCad 5 and earlier. Other programs use the extensions, too: what is no file of KiCad
// holds no links.

bool IsLegacySchematic(const InputFile& file);

/// The sheets, data sheets, files of the simulator and libraries that a legacy schematic names:
///
///     LIBS:lib/own
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
/// Libraries are looked for in the folder of the project, then in those of LibDir.
std::vector<StoredPath> FindInLegacyProject(const InputFile& file);

} // namespace Halvern::Formats::Kicad
