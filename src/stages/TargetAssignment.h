// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Lets layout plug-ins say where linked files go, takes out of the set what they left out, and
/// gives the rest its places by the default layout. False on a cancel.
bool AssignTargetPaths(const StageContext& context);

} // namespace Halvern::FileLink::Stages
