// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KicadDocument.h"

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Kicad {

/// Reads and rewrites the links of KiCad's projects (.kicad_pro), schematics (.kicad_sch) and
/// boards
/// (.kicad_pcb).
using KicadResolver = DocumentResolverFor<KicadDocument>;

} // namespace Halvern::Formats::Kicad
