// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Outcomes.h"
#include "ProblemSorter.h"

#include "corsync/Plan.h"

#include <QtCore/QHash>

namespace Halvern::Jobs {

/// Place of each file in the list of a plan.
using PlaceInPlan = QHash<const SyncServices::FileMapping*, qsizetype>;

/// Writes down as data what the flags of the files say after planning; `places` is filled in.
/// Requires job.files.
QList<PlannedFile> DescribeFiles(const JobState& job, ProblemSorter& problems, PlaceInPlan& places);

} // namespace Halvern::Jobs
