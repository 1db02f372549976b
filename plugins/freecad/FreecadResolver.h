// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FreecadDocument.h"

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Freecad {

/// Reads and rewrites the links of FreeCAD documents (.FCStd): those into other documents, and the
/// names of files that objects read.
///
/// Rewriting packs the XML files anew in which a link changes, and leaves everything else in the
/// archive byte for byte as it was.
using FreecadResolver = DocumentResolverFor<FreecadDocument>;

} // namespace Halvern::Formats::Freecad
