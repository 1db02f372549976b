// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"

namespace Halvern::Jobs {

/// What stands against carrying out the deeds of a job as a whole: room on the disks of the cloud
/// folder and of the base store and in the store itself, folders that cannot be written to. Nothing
/// is written.
QList<Finding> LookAhead(const JobState& job);

} // namespace Halvern::Jobs
