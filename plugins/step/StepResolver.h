// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "StepDocument.h"

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Step {

/// Reads and rewrites the names of files in STEP exchange files (ISO 10303-21).
using StepResolver = DocumentResolverFor<StepDocument>;

} // namespace Halvern::Formats::Step
