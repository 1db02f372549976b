// SPDX-License-Identifier: Apache-2.0

#include "SelectedFiles.h"

#include "OwnRecords.h"
#include "Paths.h"
#include "SelectionWalk.h"

#include <utility>

namespace Halvern::Jobs {

namespace {

JobFile FileOf(const SelectedEntry& entry, const QString& target)
{
    JobFile file;
    file.source = entry.source;
    file.target = target + u'/' + entry.name;
    file.isSelected = true;
    file.isFolder = entry.isFolder;
    file.isNestedFolder = entry.isFolder && entry.isNested;
    file.isHidden = entry.isHidden;
    file.status = Base::ReadFileStatus(Native(entry.source));
    return file;
}

} // namespace

bool TakeSelection(JobState& job, JobControl& control, const Sources& sources)
{
    control.BeginPhase(Phase::ReadingSelection, 0);
    const SelectionListing listing = WalkSelection(
        sources.outermost, ExcludeRules(job.request.exclude),
        [&] { return control.IsCancelRequested(); }, sources.inside);
    job.leftOut += listing.leftOut;
    const OwnRecords own(sources.outermost);
    for (const SelectedEntry& entry : listing.entries) {
        if (!own.Holds(entry.source))
            job.files.Add(FileOf(entry, job.target));
        else if (own.Is(entry.source))
            job.leftOut.append({entry.source, Remark::OwnRecord});
    }
    job.selectionRead = true;
    job.cancelled = !listing.isComplete;
    return listing.isComplete;
}

} // namespace Halvern::Jobs
