// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Conflicts.h"

#include "corsync/ImportRequest.h"
#include "corsync/Plan.h"

#include "filelink/FileSet.h"

#include <QtCore/QSet>
#include <QtCore/QString>

#include <memory>

namespace Halvern::Jobs {

/// Where a job is: what was asked for, the files with their flags, and what was done so far.
struct JobState
{
    ImportRequest request;
    /// Null until the selection was read.
    std::shared_ptr<FileLink::FileSet> files;
    /// Targets before collisions were resolved.
    TargetByFile wantedTargets;
    /// Sources that were deleted after copying, and targets whose links were rewritten.
    QSet<QString> moved;
    QSet<QString> modified;
    bool cancelled = false;
    /// False while the job is only planned.
    bool executed = false;
};

/// What happened to the file, or will happen when nothing was executed.
Outcome OutcomeOf(const SyncServices::FileMapping& file, const JobState& job);
/// Why the outcome is what it is, for a file that has no problem which tells.
Remark RemarkOf(const SyncServices::FileMapping& file, Outcome outcome, const JobState& job);
/// The source was deleted after copying, or will be.
bool DeletesSource(const SyncServices::FileMapping& file, Outcome outcome, const JobState& job);
/// Folders count only when one could not be made.
bool IsReported(const SyncServices::FileMapping& file, const JobState& job);

} // namespace Halvern::Jobs
