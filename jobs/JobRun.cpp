// SPDX-License-Identifier: Apache-2.0

#include "JobRun.h"

#include "Closure.h"
#include "Conclusion.h"
#include "DiskFlush.h"
#include "Execution.h"
#include "Paths.h"
#include "Preflight.h"
#include "Pruning.h"
#include "Results.h"
#include "SelectedFiles.h"
#include "SourceRemoval.h"

#include "corsync/JobError.h"

#include "base/RootedFolder.h"
#include "syncservices/FolderManager.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

namespace Halvern::Jobs {

using FileLink::FileLinkImporter;
using SyncFolderManagerLib::FolderManager;

namespace {

bool IsAnythingToBeDone(const JobState& job)
{
    return std::any_of(job.files.begin(), job.files.end(),
                       [](const JobFile& file) { return file.deed != Deed::Nothing; });
}

std::unique_ptr<FileLinkImporter> MakeImporter(const std::shared_ptr<JobControl>& control,
                                               const std::shared_ptr<JobDatabase>& database)
{
    auto importer = std::make_unique<FileLinkImporter>(control);
    importer->SetSyncDatabase(database);
    importer->SetProblemSink(control);
    return importer;
}

} // namespace

JobRun::JobRun(const ImportRequest& request, const std::shared_ptr<JobControl>& control)
    : m_control(control),
      m_database(std::make_shared<JobDatabase>(FolderManager::GetInstance()->GetSyncDatabase())),
      m_importer(MakeImporter(control, m_database)), m_ledger(OpenLedger()), m_journal(*m_ledger),
      m_reader(*m_importer), m_layout(m_state, *control, *m_importer),
      m_records(m_state, *m_ledger, m_journal, *m_database, *m_importer)
{
    m_state.request = request;
    if (!request.flush)
        m_ledger->DoNotFlush();
    m_state.cloudFolder = FolderManager::GetInstance()->GetCloudCacheFolderPath(false);
    QList<CopyRecord> records = m_ledger->ReadAll(m_state.cloudFolder);
    m_interrupted = m_journal.FindInterrupted(m_state.cloudFolder, m_taken);
    m_copies = CopyIndex(WithTaken(std::move(records), m_taken));
}

JobRun::~JobRun() = default;

QString JobRun::MovedTo(const QString& source, const QString& target) const
{
    for (const CopyRecord& record : m_copies.All()) {
        if (!record.isMoved || PathKey(record.project) != PathKey(target) ||
            !IsFileAt(record.target, m_state.cloudFolder))
            continue;
        if (PathKey(record.source) == PathKey(source))
            return record.target;
        if (PathKey(record.source).startsWith(PathKey(source + u'/')))
            return target + u'/' + QFileInfo(source).fileName();
    }
    return {};
}

QString JobRun::DatabaseError() const
{
    const QString error = m_database->FailureOfThisJob();
    return error.isEmpty() ? m_ledger->Error() : error;
}

QList<InterruptedJob> JobRun::Interrupted() const
{
    QList<InterruptedJob> jobs;
    for (const InterruptedRun& run : m_interrupted)
        jobs.append({run.begun, run.target, run.process, run.planned, run.done});
    return jobs;
}

bool JobRun::IsStopped()
{
    m_state.cancelled = m_control->IsCancelRequested();
    return m_state.cancelled;
}

void JobRun::Plan(const Sources& sources, const QList<LeftOutItem>& gone, const QString& target)
{
    // Without its records a job would take copies that somebody changed for anybody's files.
    if (!m_ledger->Error().isEmpty())
        throw JobError(JobErrorKind::DatabaseNotOpened, m_ledger->Error());
    m_state.request.sources = sources.outermost;
    m_state.leftOut = gone;
    m_state.target = target;
    const Base::WorkWatch::Scope watched(*m_control);
    if (IsStopped() || !TakeSelection(m_state, *m_control, sources) ||
        !FindLinkedFiles(sources.outermost))
        return;
    m_control->BeginPhase(Phase::LayingOut, 0);
    if (!m_layout.Assign()) {
        RequireWholePlan();
        if (!IsStopped())
            throw JobError(JobErrorKind::SelectionRefused,
                           QStringLiteral("the selection could not be laid out"));
        return;
    }
    Decide({});
    RequireWholePlan();
}

bool JobRun::FindLinkedFiles(const QStringList& sources)
{
    m_control->BeginPhase(Phase::ReadingLinks, 0);
    m_boundary.emplace(sources,
                       BoundaryFolders{m_state.request.within,
                                       FolderManager::GetInstance()->GetSettings().allowedFolders,
                                       m_state.cloudFolder});
    m_state.cancelled = !Closure(m_state, *m_control, m_reader, *m_boundary, m_copies).Find();
    return !m_state.cancelled;
}

/// A stage that an exception ended leaves files out: the others would come without what they link,
/// and a move would delete their sources.
void JobRun::RequireWholePlan() const
{
    for (const FileLink::Problem& problem : m_control->Problems().All())
        if (problem.kind == FileLink::ProblemKind::StageEnded)
            throw JobError(JobErrorKind::PlanNotMade, problem.text);
}

void JobRun::Decide(const Answers& answers)
{
    m_control->BeginPhase(Phase::LookingForConflicts, 0);
    const Base::WorkWatch::Scope watched(*m_control);
    Decisions decisions(m_state, *m_control, m_reader, m_layout, m_copies);
    m_state.cancelled = !decisions.Make(answers) || m_control->StoppedJob();
    if (m_state.request.move && !m_state.cancelled)
        SourceRemoval(m_state, *m_control).Foresee();
    if (m_state.request.prune && !m_state.cancelled)
        Pruning(m_state).Foresee();
    if (m_control->StoppedJob()) {
        m_state.cancelled = true;
        ForgetForeseen();
    }
    m_conflicts = decisions.Conflicts();
    m_findings = m_state.cancelled ? QList<Finding>() : LookAhead(m_state);
}

bool JobRun::MayBegin()
{
    if (!IsStopped())
        return true;
    ForgetForeseen();
    return false;
}

/// What a plan would prune is not pruned yet.
void JobRun::ForgetForeseen()
{
    m_state.pruned.clear();
    m_state.notPruned.clear();
}

void JobRun::Execute(Results& results)
{
    m_database->AllowWrites();
    m_state.executed = true;
    ForgetForeseen();
    const Base::WorkWatch::Scope watched(*m_control);
    Base::RootedFolder cloud;
    const Base::FileResult opened = cloud.Open(Native(m_state.cloudFolder));
    Staging staging(cloud);
    const Base::FileResult begun = opened ? staging.Begin() : opened;
    // Where nothing is to be written that it cannot be is no matter.
    if (!begun && (!opened || IsAnythingToBeDone(m_state))) {
        FailToBegin(begun);
        return;
    }
    if (HasAnythingToWrite() &&
        !m_records.Begin(QString::fromStdString(begun ? staging.Name() : std::string()),
                         m_interrupted, m_taken)) {
        FailUnrecorded();
        return;
    }
    // Once the files that linked them are written nothing tells that any more.
    if (!m_state.lostCopies.isEmpty())
        static_cast<void>(m_ledger->NoteLinkedNoMore(m_state.lostCopies));
    const SyncServices::BaseStoreRun run;
    DiskFlush flush(cloud, m_state.request.flush);
    const JobMeans means{m_state, *m_control, m_reader, m_journal, m_records, results, *m_boundary};
    Execution(means, cloud, staging, flush).Run();
    Conclusion(means, m_copies, cloud, flush).Draw([this] { return DatabaseError(); });
}

bool JobRun::HasAnythingToWrite() const
{
    return IsAnythingToBeDone(m_state) || m_state.request.move || m_state.request.prune ||
           !m_interrupted.isEmpty();
}

/// What is not written down before it is done would be nobody's after a kill.
void JobRun::FailUnrecorded()
{
    for (JobFile& file : m_state.files) {
        if (file.deed == Deed::Nothing)
            continue;
        m_control->Report({FileLink::Stage::CopyFiles,
                           FileLink::ProblemKind::NotCopied,
                           file.source,
                           QStringLiteral("Failed to copy: the journal could not be written"),
                           {}});
        file.End(Outcome::Failed);
    }
    if (m_state.request.move)
        SourceRemoval(m_state, *m_control).KeepRest();
}

void JobRun::FailToBegin(const Base::FileResult& why)
{
    m_control->Report({FileLink::Stage::CopyFiles,
                       FileLink::ProblemKind::FolderNotMade,
                       {},
                       QString::fromStdString(why.Text()),
                       {}});
    for (JobFile& file : m_state.files)
        if (file.deed != Deed::Nothing)
            file.End(Outcome::Failed, Remark::FolderNotMade, m_state.cloudFolder);
}

} // namespace Halvern::Jobs
