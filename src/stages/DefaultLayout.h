// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Gives every linked file that has no target yet one beside the file that links it, or in a folder
/// of its own name there. False on a cancel and without files.
bool AssignDefaultTargetPaths(const StageContext& context);

} // namespace Halvern::FileLink::Stages
