// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Copies one file; with `deleteSource` it is moved. An existing target is parked under a temporary
/// name, the copy takes its place, and only then is the parked file deleted. When the copy fails
/// the parked file stays where it is.
bool CopyFile(const StageContext& context, const FileMappingPointer& mapping, bool deleteSource);

} // namespace Halvern::FileLink::Stages
