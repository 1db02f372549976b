// SPDX-License-Identifier: Apache-2.0

#include "corsync/Retry.h"

#include "corsync/JobError.h"

#include "FileMaker.h"
#include "FileStamps.h"
#include "JobDatabase.h"
#include "JobFile.h"
#include "Ledger.h"
#include "LinkReader.h"
#include "Paths.h"
#include "Records.h"
#include "Results.h"
#include "Selection.h"
#include "Staging.h"

#include "filelink/FileLinkImporter.h"
#include "syncservices/BaseStore.h"
#include "syncservices/SyncManager.h"

#include <utility>

namespace Halvern::Jobs {

namespace {

/// A copy whose links are still to be rewritten, as a file of a job.
JobFile PendingFile(const CopyRecord& record)
{
    JobFile file;
    file.source = record.source;
    file.target = record.target;
    file.record = record;
    file.wantedLinks = record.targetLinks;
    file.linksState = record.linksState;
    file.readers = record.readers;
    file.sourceStamp = record.sourceStamp;
    file.targetStamp = record.targetStamp;
    file.outcome = Outcome::Unchanged;
    file.deed = Deed::Relink;
    for (const SyncServices::FileLink& link : record.sourceLinks)
        file.links.append({link, {}, -1, LinkState::Found});
    file.targetStatus = Base::ReadLinkStatus(Native(record.target));
    if (!ExistsOnDisk(record.target))
        file.End(Outcome::Missing);
    else if (!IsSameAsRecorded(record.targetStamp, record.recordedAt, record.target, false))
        file.End(Outcome::Left);
    return file;
}

/// Only its source can tell what links it should hold.
JobFile UnreadFile(const CopyRecord& record)
{
    JobFile file;
    file.source = record.source;
    file.target = record.target;
    file.End(Outcome::Unchanged, Remark::LinksNotRead);
    return file;
}

void TakePending(Ledger& ledger, const QString& folder, JobState& job, const JobControl& control)
{
    for (const CopyRecord& record : ledger.ReadAll(folder)) {
        if (record.isRewritePending) {
            JobFile file = PendingFile(record);
            // A look at the copy that was cut short tells nothing of it.
            if (control.StoppedJob())
                return;
            job.files.Add(std::move(file));
        } else if (record.linksState == LinksState::Failed && ExistsOnDisk(record.target)) {
            job.files.Add(UnreadFile(record));
        }
    }
}

/// What is known of the copy stays, but for what the attempt changed.
CopyRecord RecordAfter(const JobFile& file)
{
    CopyRecord record = *file.record;
    record.isRewritePending = file.isPending;
    if (!file.isPending) {
        record.targetStamp = file.targetStamp;
        record.recordedAt = file.recordedAt;
    }
    return record;
}

void RewriteAll(JobState& job, JobControl& control, LinkReader& reader, Ledger& ledger,
                Results& results)
{
    Base::RootedFolder cloud;
    const Base::FileResult opened = cloud.Open(Native(job.cloudFolder));
    Staging staging(cloud);
    const Base::FileResult begun = opened ? staging.Begin() : opened;
    if (!begun)
        throw JobError(JobErrorKind::NoCloudFolder, QString::fromStdString(begun.Text()));
    const SyncServices::BaseStoreRun run;
    FileMaker maker(job, control, reader, cloud, staging);
    control.BeginPhase(Phase::RewritingLinks, job.files.Size());
    for (JobFile& file : job.files) {
        job.cancelled = control.IsCancelRequested();
        if (job.cancelled)
            return;
        control.BeginFile(0);
        if (file.deed == Deed::Relink) {
            job.cancelled = !maker.Relink(file);
            if (job.cancelled)
                return;
            // Otherwise the links are still to be written, and the record says so.
            if (file.isDone) {
                QList<CopyRecord> records{RecordAfter(file)};
                static_cast<void>(ledger.Write(records));
            }
        }
        results.Tell(file);
        control.EndFile();
    }
}

} // namespace

JobResult RetryRewrites(const Session& session, const QString& folder, IJobObserver* observer,
                        const CancelToken* cancel)
{
    if (session.Use() != SessionUse::Import)
        throw JobError(JobErrorKind::WrongOrder, QStringLiteral("the session is for plans only"));
    RequireSync();
    JobState job;
    job.cloudFolder = session.CloudFolder();
    job.executed = true;
    const QString below = CheckedTarget(folder);
    if (!IsFolder(below))
        throw JobError(JobErrorKind::SourceMissing, QStringLiteral("no such folder: ") + folder);
    const auto control = std::make_shared<JobControl>(observer, cancel);
    FileLink::FileLinkImporter importer(control);
    importer.SetProblemSink(control);
    LinkReader reader(importer);
    const Base::WorkWatch::Scope watched(*control);
    const std::unique_ptr<Ledger> ledger = OpenLedger();
    TakePending(*ledger, below, job, *control);
    job.cancelled = control->StoppedJob();
    Results results(job, *control);
    if (job.files.Size() > 0)
        RewriteAll(job, *control, reader, *ledger, results);
    JobResult result{results.MakeAll(), {}};
    result.summary = Summarize(result.files);
    result.summary.problems = results.ProblemsOfNoFile();
    result.summary.registrationFaults = ListRegistrationFaults(session);
    result.summary.databaseError = ledger->Error();
    result.summary.cancelled = job.cancelled;
    result.summary.executed = true;
    control->Rethrow();
    return result;
}

} // namespace Halvern::Jobs
