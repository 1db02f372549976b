// SPDX-License-Identifier: Apache-2.0

#include "Outcomes.h"

#include "Paths.h"

namespace Halvern::Jobs {

using SyncServices::FileMapping;

namespace {

/// The file gets another target than the one that was taken.
bool IsRenamed(const FileMapping& file, const JobState& job)
{
    return job.wantedTargets.value(&file, file.GetTargetFile()) != file.GetTargetFile();
}

/// A file that was rewritten this moment may still carry the flag.
bool IsLocked(const FileMapping& file, const JobState& job)
{
    return job.executed && !job.cancelled && file.HasFlag(FileMapping::NeedsRepath) &&
           !job.modified.contains(file.GetTargetFile()) && file.ExistsInTarget();
}

bool IsMoved(const FileMapping& file, const JobState& job)
{
    return job.request.move && file.HasFlag(FileMapping::Selected);
}

Outcome OutcomeOfCopy(const FileMapping& file, const JobState& job)
{
    if (IsRenamed(file, job))
        return Outcome::Renamed;
    if (file.HasFlag(FileMapping::Collision))
        return Outcome::Replaced;
    return IsMoved(file, job) ? Outcome::Moved : Outcome::Copied;
}

/// Of a file that is to be copied.
Outcome OutcomeSoFar(const FileMapping& file, const JobState& job)
{
    if (!file.HasTargetFile())
        return Outcome::Failed;
    const bool isDone = file.HasFlag(FileMapping::Copied);
    if (job.cancelled && !(job.executed && isDone))
        return Outcome::NotDone;
    return job.executed && !isDone ? Outcome::Failed : OutcomeOfCopy(file, job);
}

Remark RemarkOfFailure(const FileMapping& file)
{
    if (!file.HasTargetFile())
        return Remark::NoTarget;
    if (file.HasFlag(FileMapping::Folder))
        return Remark::FolderNotMade;
    return IsFolder(file.GetTargetFile()) ? Remark::FolderInTheWay : Remark::Unexplained;
}

bool HoldsOldLinks(const FileMapping& file, const JobState& job)
{
    return job.executed && job.cancelled && file.HasFlag(FileMapping::Copied) &&
           !file.HasFlag(FileMapping::Repathed) && !file.GetSourceFileLinks().isEmpty();
}

} // namespace

Outcome OutcomeOf(const FileMapping& file, const JobState& job)
{
    if (file.HasFlag(FileMapping::NotFilePath))
        return Outcome::Url;
    if (file.HasFlag(FileMapping::SourceMissing))
        return file.HasFlag(FileMapping::Selected) ? Outcome::Failed : Outcome::Missing;
    if (IsLocked(file, job))
        return Outcome::Locked;
    if (file.HasFlag(FileMapping::SameSourceAndTarget))
        return Outcome::InPlace;
    if (file.HasFlag(FileMapping::Unchanged))
        return Outcome::Unchanged;
    if (file.HasFlag(FileMapping::Folder))
        return Outcome::Failed;
    if (file.HasFlag(FileMapping::NoCopy))
        return job.request.linksOnly && file.HasFlag(FileMapping::Selected) ? Outcome::Skipped
                                                                            : Outcome::Kept;
    // What was copied is no folder: the disk need not be asked.
    if (!file.HasFlag(FileMapping::Copied) && IsFolder(file.GetSourceFile()))
        return Outcome::Skipped;
    return OutcomeSoFar(file, job);
}

Remark RemarkOf(const FileMapping& file, Outcome outcome, const JobState& job)
{
    if (outcome == Outcome::Failed)
        return RemarkOfFailure(file);
    if (outcome == Outcome::Skipped)
        return file.HasFlag(FileMapping::NoCopy) ? Remark::OnlyLinksWanted : Remark::LinkedFolder;
    return HoldsOldLinks(file, job) ? Remark::LinksNotRewritten : Remark::None;
}

bool DeletesSource(const FileMapping& file, Outcome outcome, const JobState& job)
{
    if (job.executed)
        return job.moved.contains(file.GetSourceFile());
    return IsMoved(file, job) && (outcome == Outcome::Moved || outcome == Outcome::Replaced ||
                                  outcome == Outcome::Renamed);
}

bool IsReported(const FileMapping& file, const JobState& job)
{
    if (!file.HasFlag(FileMapping::Folder))
        return true;
    return job.executed && !job.cancelled && !file.HasFlag(FileMapping::NoCopy) &&
           !IsFolder(file.GetTargetFile());
}

} // namespace Halvern::Jobs
