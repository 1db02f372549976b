// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ScadDocument.h"

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::OpenScad {

/// Reads and rewrites the names of files in OpenSCAD models.
using OpenScadResolver = DocumentResolverFor<ScadDocument>;

} // namespace Halvern::Formats::OpenScad
