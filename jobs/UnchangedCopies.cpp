// SPDX-License-Identifier: Apache-2.0

#include "UnchangedCopies.h"

#include "FileStamps.h"
#include "Orphans.h"
#include "Paths.h"

namespace Halvern::Jobs {

namespace {

void TakeStamps(JobFile& file, const CopyRecord& record)
{
    file.sourceStamp = record.sourceStamp;
    file.targetStamp = record.targetStamp;
    file.recordedAt = record.recordedAt;
}

bool IsSound(const FileStamp& now, const FileStamp& recorded, qint64 recordedAt)
{
    return now.modified == recorded.modified && !IsRacy(recorded, recordedAt);
}

/// The times tell of both sides that they are what was recorded.
bool AreSound(const JobFile& file, const CopyRecord& record)
{
    return IsSound(StampOf(file.source, false), record.sourceStamp, record.recordedAt) &&
           IsSound(StampOf(file.target, false), record.targetStamp, record.recordedAt);
}

bool IsRead(const JobFile& file, const CopyRecord& record, const JobState& job)
{
    return record.origin == OriginOf(file, job) && record.isRewritePending == file.isPending &&
           (!file.linksKnown ||
            (record.readers == file.readers && record.linksState == file.linksState));
}

/// What this project cannot read another one has read.
bool IsReadElsewhere(const JobFile& file, const CopyRecord& record, const JobState& job)
{
    return file.linksKnown && file.linksState != LinksState::Read &&
           PathKey(record.project) != PathKey(job.target);
}

/// It holds neither what was recorded nor what its source holds.
bool IsAnother(const JobFile& file)
{
    const QByteArray& found = file.targetStamp.hash;
    return file.record && !file.record->targetStamp.hash.isEmpty() &&
           found != file.record->targetStamp.hash && found != file.sourceStamp.hash;
}

void Compare(JobFile& file, const CopyRecord* record, JobControl& control, Records& records)
{
    file.recordedAt = ClockNow();
    file.sourceStamp = StampOf(file.source, true);
    file.targetStamp = StampOf(file.target, true);
    // A hash that was cut off says nothing.
    if (control.IsCancelRequested())
        return record ? TakeStamps(file, *record) : void();
    if (!IsStamped(Base::ReadLinkStatus(Native(file.target)), StampOf(file.targetStatus)) ||
        IsAnother(file))
        file.End(Outcome::Failed, Remark::TargetChanged);
    else if (Base::ReadFileStatus(Native(file.source)) == file.status)
        records.Note(file);
    else if (record)
        TakeStamps(file, *record);
}

} // namespace

bool IsStamped(const Base::FileStatus& copy, const FileStamp& stamp)
{
    return copy.kind == Base::FileKind::File && qint64(copy.size) == stamp.bytes &&
           copy.modified == stamp.modified;
}

void NoteUnchangedCopies(JobState& job, JobControl& control, Records& records)
{
    for (JobFile& file : job.files) {
        if (file.isFolder || file.outcome != Outcome::Unchanged || file.isDone || file.wasMoved)
            continue;
        // What was adopted is not in the ledger yet.
        const CopyRecord* record = file.record && file.record->id >= 0 ? &*file.record : nullptr;
        const bool areSound = record && AreSound(file, *record);
        if (record &&
            ((areSound && IsRead(file, *record, job)) || IsReadElsewhere(file, *record, job))) {
            // With the hashes, when a move notes it again.
            TakeStamps(file, *record);
        } else if (areSound) {
            TakeStamps(file, *record);
            records.Note(file);
        } else {
            Compare(file, record, control, records);
        }
        job.cancelled = control.StoppedJob();
        if (job.cancelled)
            return;
    }
}

} // namespace Halvern::Jobs
