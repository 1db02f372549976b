// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KicadDocument.h"

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Kicad {

/// Reads and rewrites the links of KiCad's projects, schematics, boards and footprints, of those of
/// KiCad 5 and earlier, and of files of the simulator.
using KicadResolver = DocumentResolverFor<KicadDocument>;

} // namespace Halvern::Formats::Kicad
