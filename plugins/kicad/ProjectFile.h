// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "StoredPath.h"

#include "KitNames.h"
#include "pluginkit/InputFile.h"

#include <string>
#include <vector>

namespace Halvern::Formats::Kicad {

inline constexpr std::uint64_t MaxProjectSize = std::uint64_t(64) << 20;

/// The drawing sheets that a project file names: "page_layout_descr_file" of "pcbnew" and of
/// "schematic". The whole file is checked to be one JSON object in UTF-8.
std::vector<StoredPath> FindDrawingSheets(const InputFile& file);

/// Text as a JSON string.
std::string JsonString(std::string_view text);

} // namespace Halvern::Formats::Kicad
