// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"
#include "ProblemSorter.h"

#include "corsync/Plan.h"

namespace Halvern::Jobs {

/// Writes down as data what was decided.
QList<PlannedFile> DescribeFiles(const JobState& job, ProblemSorter& problems);

} // namespace Halvern::Jobs
