// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "StoredPath.h"

#include "KitNames.h"
#include "pluginkit/InputFile.h"

#include <vector>

namespace Halvern::Formats::Kicad {

inline constexpr std::size_t MaxDirectivePath = 4096;
inline constexpr std::size_t MaxSpiceIncludes = 100'000;

/// The files that a file of the simulator includes; the simulator takes their paths from the folder
/// of that file. Any text can be one, and the extensions are shared with other formats: what holds
/// a NUL byte, or is a legacy library of symbols, includes nothing.
std::vector<StoredPath> FindSpiceIncludes(const InputFile& file);

} // namespace Halvern::Formats::Kicad
