// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Says for every file what stands at its target: nothing, something that collides with it, or its
/// earlier copy, both unchanged since then. False on a cancel, and when a file has no target.
bool MarkCollisions(const StageContext& context);
/// The same for one file.
bool MarkCollision(const StageContext& context, const FileMappingPointer& mapping);

} // namespace Halvern::FileLink::Stages
