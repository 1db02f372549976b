// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Writes the trees of links at DEBUG, as they lie at the sources or at the targets.
void LogFileTree(const StageContext& context, bool source);

} // namespace Halvern::FileLink::Stages
