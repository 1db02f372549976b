// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Gives every copy the links that it must hold: those of its source, so that they lead to the
/// other copies. Part of the copy stage, in which an exception ends that. False on a cancel, and
/// when a copy is missing.
bool ComputeTargetFileLinks(const StageContext& context);

} // namespace Halvern::FileLink::Stages
