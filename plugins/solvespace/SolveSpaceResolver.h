// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "SlvsDocument.h"

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::SolveSpace {

/// Reads and rewrites the names of linked models and pictures in SolveSpace models (.slvs).
using SolveSpaceResolver = DocumentResolverFor<SlvsDocument>;

} // namespace Halvern::Formats::SolveSpace
