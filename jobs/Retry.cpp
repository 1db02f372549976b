// SPDX-License-Identifier: Apache-2.0

#include "corsync/Retry.h"

#include "corsync/JobError.h"

#include "Batch.h"
#include "DiskFlush.h"
#include "FileMaker.h"
#include "FileStamps.h"
#include "JobFile.h"
#include "Journal.h"
#include "Ledger.h"
#include "LinkReader.h"
#include "Paths.h"
#include "Records.h"
#include "RequestJson.h"
#include "Results.h"
#include "Selection.h"
#include "Staging.h"

#include "filelink/FileLinkImporter.h"
#include "syncservices/BaseStore.h"
#include "syncservices/FolderManager.h"
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

void TakePending(const QList<CopyRecord>& records, JobState& job, const JobControl& control)
{
    for (const CopyRecord& record : records) {
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

bool LiesIn(const QString& path, const QString& folder)
{
    return PathKey(path).startsWith(PathKey(folder + u'/'));
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

/// What a retry works with.
struct Attempt
{
    JobState& job;
    JobControl& control;
    LinkReader& reader;
    Journal& journal;
    Results& results;
    QList<InterruptedRun> interrupted;
    QList<CopyRecord> taken;
    QList<CopyRecord> records = {};
    QList<DoneFile> settled = {};

    bool Begin(const QString& staging);
    void Note(const JobFile& file);
    bool Commit(const std::vector<const StagedCopy*>& ready);
    Batch::Hooks Hooks();
    bool Rewrite(JobFile& file, Batch& batch, FileMaker& maker);
    void RewriteIn(Batch& batch, FileMaker& maker);
    void RewriteAll();
};

bool Attempt::Begin(const QString& staging)
{
    QList<RunFile> planned;
    for (const JobFile& file : job.files)
        if (file.deed == Deed::Relink)
            planned.append({job.files.PlaceOf(file),
                            file.source,
                            file.target,
                            RunAction::Relink,
                            false,
                            file.sourceStamp,
                            file.targetStatus,
                            {},
                            RunStep::Planned,
                            {},
                            file.record});
    const SyncServices::ServicesSettings& settings =
        SyncFolderManagerLib::FolderManager::GetInstance()->GetSettings();
    return journal.Begin({QStringLiteral("retry"), job.cloudFolder, job.target, staging, {}},
                         planned, interrupted, taken,
                         {settings.runHistoryLimit, settings.runHistoryDays});
}

void Attempt::Note(const JobFile& file)
{
    // Otherwise the links are still to be written, and the record says so.
    if (file.isDone)
        records.append(RecordAfter(file));
    settled.append({job.files.PlaceOf(file), static_cast<int>(OutcomeNow(file, job)), false,
                    file.targetStamp});
}

bool Attempt::Commit(const std::vector<const StagedCopy*>& ready)
{
    QList<ReadyFile> announced;
    for (const StagedCopy* staged : ready)
        announced.append(
            {job.files.PlaceOf(*staged->file), staged->version, RecordAfter(*staged->file)});
    const bool written = journal.Advance(records, settled, announced);
    if (written) {
        records.clear();
        settled.clear();
    }
    return written;
}

Batch::Hooks Attempt::Hooks()
{
    return {[this](const std::vector<const StagedCopy*>& ready) { return Commit(ready); },
            [this] {
                const QString whom = journal.Living(job.cloudFolder).join(QStringLiteral(", "));
                control.Tell([&](IJobObserver& observer) {
                    observer.Waiting(whom.isEmpty() ? QStringLiteral("another import") : whom);
                });
            },
            [this] { return !control.IsCancelRequested(); },
            [this](const StagedCopy& staged) {
                Note(*staged.file);
                results.Tell(*staged.file);
            }};
}

bool Attempt::Rewrite(JobFile& file, Batch& batch, FileMaker& maker)
{
    using Made = FileMaker::Made;
    control.BeginFile(0);
    const bool isMeant = file.deed == Deed::Relink;
    Made made = isMeant ? maker.Relink(file) : Made::Now;
    if (made == Made::Full)
        made = batch.Complete(Hooks()) ? maker.Relink(file) : Made::Stopped;
    if (made == Made::Stopped)
        return false;
    if (file.deed == Deed::Nothing && isMeant)
        Note(file);
    if (file.deed == Deed::Nothing)
        results.Tell(file);
    control.EndFile();
    return !batch.IsFull() || batch.Complete(Hooks());
}

void Attempt::RewriteIn(Batch& batch, FileMaker& maker)
{
    for (JobFile& file : job.files)
        if (control.IsCancelRequested() || !Rewrite(file, batch, maker))
            break;
    static_cast<void>(batch.Complete(Hooks()));
    job.cancelled = control.StoppedJob();
}

void Attempt::RewriteAll()
{
    Base::RootedFolder cloud;
    const Base::FileResult opened = cloud.Open(Native(job.cloudFolder));
    Staging staging(cloud);
    const Base::FileResult begun = opened ? staging.Begin() : opened;
    if (!begun)
        throw JobError(JobErrorKind::NoCloudFolder, QString::fromStdString(begun.Text()));
    if (!Begin(QString::fromStdString(staging.Name())))
        return;
    const SyncServices::BaseStoreRun run;
    DiskFlush flush(cloud, true);
    Batch batch(job, control, cloud, staging, flush);
    FileMaker maker(job, control, reader, cloud, staging, batch, nullptr);
    control.BeginPhase(Phase::RewritingLinks, job.files.Size());
    RewriteIn(batch, maker);
    // What was done is recorded also when the job was cancelled.
    control.GoOn();
    if (const Base::FileResult flushed = flush.Run(); !flushed) {
        control.Report({FileLink::Stage::RepathFiles,
                        FileLink::ProblemKind::LinksNotRewritten,
                        {},
                        QStringLiteral("A power cut may take back what was rewritten: ") +
                            QString::fromStdString(flushed.Text()),
                        {}});
        return;
    }
    const bool written = Commit({});
    static_cast<void>(journal.End(job.cancelled ? RunState::Cancelled
                                  : written     ? RunState::Complete
                                                : RunState::Failed,
                                  CountsOf(job)));
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
    const std::unique_ptr<Ledger> ledger = OpenLedger();
    Journal journal(*ledger);
    QList<CopyRecord> taken;
    const QList<InterruptedRun> interrupted = journal.FindInterrupted(job.cloudFolder, taken);
    QList<CopyRecord> records = WithTaken(ledger->ReadAll(job.cloudFolder), taken);
    records.removeIf([&](const CopyRecord& record) { return !LiesIn(record.target, below); });
    const Base::WorkWatch::Scope watched(*control);
    TakePending(records, job, *control);
    job.cancelled = control->StoppedJob();
    job.target = below;
    Results results(job, *control);
    if (job.files.Size() > 0)
        Attempt{job, *control, reader, journal, results, interrupted, taken}.RewriteAll();
    JobResult result{results.MakeAll(), {}};
    result.summary = Summarize(result.files);
    result.summary.problems = results.ProblemsOfNoFile();
    result.summary.registrationFaults = ListRegistrationFaults(session);
    result.summary.databaseError = ledger->Error();
    result.summary.cancelled = job.cancelled;
    result.summary.executed = true;
    for (const InterruptedRun& run : interrupted)
        result.summary.interrupted.append(
            {run.begun, run.target, run.process, run.planned, run.done});
    control->Rethrow();
    return result;
}

} // namespace Halvern::Jobs
