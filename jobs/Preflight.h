// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"

namespace Halvern::Jobs {

/// What stands against carrying out the deeds of a job as a whole: room on the disk and in the base
/// store, folders that cannot be written to. Nothing is written.
QList<Finding> LookAhead(const JobState& job);

} // namespace Halvern::Jobs
