// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Settles every collision by the options: the file stays out, gets another name, or replaces what
/// is there. False on a cancel.
bool ResolveCollisions(const StageContext& context);
/// Gives a file that is to be renamed a free name beside its target. Only the disk is asked: two
/// files that are renamed in one pass may get one name.
bool AssignUniqueTargetName(const StageContext& context, const FileMappingPointer& mapping);

} // namespace Halvern::FileLink::Stages
