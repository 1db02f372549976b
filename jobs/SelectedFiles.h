// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobControl.h"
#include "JobFile.h"
#include "Selection.h"

namespace Halvern::Jobs {

/// Files and folders of the selection become files of the job; what is left out is noted. Requires
/// the job's request and target. False when the job is cancelled.
bool TakeSelection(JobState& job, JobControl& control, const Sources& sources);

} // namespace Halvern::Jobs
