// SPDX-License-Identifier: Apache-2.0

#include "JobRun.h"

#include "Closure.h"
#include "FileMaker.h"
#include "FileStamps.h"
#include "LinkPlanning.h"
#include "OwnRecords.h"
#include "Paths.h"
#include "Preflight.h"
#include "Results.h"
#include "SelectionWalk.h"
#include "SourceRemoval.h"
#include "Targets.h"

#include "corsync/JobError.h"

#include "base/RootedFolder.h"
#include "syncservices/FolderManager.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Jobs {

using FileLink::FileLinkImporter;
using SyncFolderManagerLib::FolderManager;
using SyncServices::SyncManager;

namespace {

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
      m_importer(MakeImporter(control, m_database)), m_ledger(OpenLedger()), m_reader(*m_importer),
      m_layout(m_state, *control, *m_importer),
      m_records(m_state, *m_ledger, *m_database, *m_importer)
{
    m_state.request = request;
    m_state.cloudFolder = FolderManager::GetInstance()->GetCloudCacheFolderPath(false);
    m_copies = CopyIndex(m_ledger->ReadAll(m_state.cloudFolder));
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

bool JobRun::IsStopped()
{
    m_state.cancelled = m_control->IsCancelRequested();
    return m_state.cancelled;
}

void JobRun::Plan(const Sources& sources, const QList<LeftOutItem>& gone, const QString& target)
{
    m_state.request.sources = sources.outermost;
    m_state.leftOut = gone;
    m_state.target = target;
    if (IsStopped() || !TakeSelection(sources) || !FindLinkedFiles(sources.outermost))
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

bool JobRun::TakeSelection(const Sources& sources)
{
    m_control->BeginPhase(Phase::ReadingSelection, 0);
    const SelectionListing listing = WalkSelection(
        sources.outermost, ExcludeRules(m_state.request.exclude),
        [this] { return m_control->IsCancelRequested(); }, sources.inside);
    m_state.leftOut += listing.leftOut;
    const OwnRecords own(sources.outermost);
    for (const SelectedEntry& entry : listing.entries) {
        if (own.Holds(entry.source)) {
            if (own.Is(entry.source))
                m_state.leftOut.append({entry.source, Remark::OwnRecord});
            continue;
        }
        JobFile file;
        file.source = entry.source;
        file.target = m_state.target + u'/' + entry.name;
        file.isSelected = true;
        file.isFolder = entry.isFolder;
        file.isNestedFolder = entry.isFolder && entry.isNested;
        file.isHidden = entry.isHidden;
        file.status = Base::ReadFileStatus(Native(entry.source));
        m_state.files.Add(std::move(file));
    }
    m_state.selectionRead = true;
    m_state.cancelled = !listing.isComplete;
    return listing.isComplete;
}

bool JobRun::FindLinkedFiles(const QStringList& sources)
{
    m_control->BeginPhase(Phase::ReadingLinks, 0);
    Boundary boundary(sources, {m_state.request.within,
                                FolderManager::GetInstance()->GetSettings().allowedFolders,
                                m_state.cloudFolder});
    m_state.cancelled = !Closure(m_state, *m_control, m_reader, boundary, m_copies).Find();
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
    Decisions decisions(m_state, *m_control, m_reader, m_layout, m_copies);
    m_state.cancelled = !decisions.Make(answers) || m_control->StoppedJob();
    if (m_state.request.move && !m_state.cancelled)
        SourceRemoval(m_state, *m_control).Foresee();
    m_conflicts = decisions.Conflicts();
    m_findings = m_state.cancelled ? QList<Finding>() : LookAhead(m_state);
}

bool JobRun::MayBegin()
{
    return !IsStopped();
}

void JobRun::Execute(Results& results)
{
    m_database->AllowWrites();
    m_state.executed = true;
    Base::RootedFolder cloud;
    const Base::FileResult opened = cloud.Open(Native(m_state.cloudFolder));
    Staging staging(cloud);
    const Base::FileResult begun = opened ? staging.Begin() : opened;
    if (!begun) {
        m_control->Report(
            {FileLink::Stage::CopyFiles,
             FileLink::ProblemKind::FolderNotMade,
             {},
             m_state.cloudFolder + QStringLiteral(": ") + QString::fromStdString(begun.Text()),
             {}});
        for (JobFile& file : m_state.files)
            if (file.deed != Deed::Nothing)
                file.End(Outcome::Failed, Remark::Unexplained);
        return;
    }
    const SyncServices::BaseStoreRun run;
    FileMaker maker(m_state, *m_control, m_reader, cloud, staging);
    m_maker = &maker;
    MakeFolders();
    const bool copied = MakeFiles(results, Deed::Copy);
    RelinkAroundFailures();
    if (copied && MakeFiles(results, Deed::Relink))
        NoteUnchanged();
    m_maker = nullptr;
    Finish(results, cloud);
}

void JobRun::MakeFolders()
{
    if (m_state.request.linksOnly)
        return;
    for (JobFile& file : m_state.files) {
        if (!file.isFolder || file.isDropped || m_control->IsCancelRequested())
            continue;
        if (!m_maker->MakeFolder(file))
            file.End(Outcome::Failed, Remark::FolderNotMade);
    }
}

bool JobRun::MakeFiles(Results& results, Deed deed)
{
    const auto isMeant = [&](const JobFile& file) { return !file.isFolder && file.deed == deed; };
    m_control->BeginPhase(deed == Deed::Copy ? Phase::Copying : Phase::RewritingLinks,
                          std::count_if(m_state.files.begin(), m_state.files.end(), isMeant));
    if (IsStopped())
        return false;
    for (JobFile& file : m_state.files) {
        if (!isMeant(file)) {
            if (deed == Deed::Copy && file.deed == Deed::Nothing)
                results.Tell(file);
            continue;
        }
        if (IsStopped())
            return false;
        const qint64 bytes = qint64(file.status.size);
        if (deed == Deed::Copy)
            m_maker->Make(file);
        else
            m_maker->Relink(file);
        if (file.isDone)
            m_records.Note(file);
        results.Tell(file);
        m_control->Step(bytes);
    }
    return true;
}

/// A file that could not be copied is not where the links of others were to lead: those say again
/// what they say in the source.
void JobRun::RelinkAroundFailures()
{
    const auto isFailed = [](const JobFile& file) { return file.outcome == Outcome::Failed; };
    if (!std::any_of(m_state.files.begin(), m_state.files.end(), isFailed))
        return;
    QList<QList<SyncServices::FileLink>> written;
    for (const JobFile& file : m_state.files)
        written.append(file.wantedLinks);
    PlanLinks(m_state);
    for (qsizetype place = 0; place < m_state.files.Size(); ++place) {
        JobFile& file = m_state.files.At(place);
        if (file.isDone && !file.isPending && file.wantedLinks != written.at(place)) {
            file.targetStatus = Base::ReadLinkStatus(Native(file.target));
            file.deed = Deed::Relink;
        }
    }
}

/// Copies that somebody else made, times that changed without the content, and records that cannot
/// tell by the time whether a file changed.
void JobRun::NoteUnchanged()
{
    const auto isSound = [](const FileStamp& now, const FileStamp& recorded, qint64 recordedAt) {
        return now.modified == recorded.modified && !IsRacy(recorded, recordedAt);
    };
    for (JobFile& file : m_state.files) {
        if (file.isFolder || file.outcome != Outcome::Unchanged || file.isDone || file.wasMoved)
            continue;
        file.recordedAt = ClockNow();
        file.sourceStamp = StampOf(file.source, false);
        file.targetStamp = StampOf(file.target, false);
        const CopyRecord* record = file.record ? &*file.record : nullptr;
        const bool isRead = record && (!file.linksKnown || (record->readers == file.readers &&
                                                            record->linksState == file.linksState));
        if (isRead && isSound(file.sourceStamp, record->sourceStamp, record->recordedAt) &&
            isSound(file.targetStamp, record->targetStamp, record->recordedAt)) {
            // With the hashes, when a move notes it again.
            file.recordedAt = record->recordedAt;
            file.sourceStamp = record->sourceStamp;
            file.targetStamp = record->targetStamp;
            continue;
        }
        file.sourceStamp = StampOf(file.source, true);
        file.targetStamp = StampOf(file.target, true);
        m_records.Note(file);
    }
}

void JobRun::Finish(Results& results, const Base::RootedFolder& cloud)
{
    m_control->BeginPhase(Phase::Recording, 0);
    // What was done is recorded also when the job was cancelled.
    m_control->GoOn();
    const bool recorded = m_records.Flush();
    static_cast<void>(m_records.Finish());
    if (m_state.request.move && recorded && !m_state.cancelled && DatabaseError().isEmpty())
        RemoveSources(results);
    else if (m_state.request.move)
        SourceRemoval(m_state, *m_control).KeepRest();
    if (m_state.request.prune && !m_state.cancelled)
        Prune(cloud);
    static_cast<void>(m_records.Flush());
    results.TellRest();
}

/// What is gone must be known as moved also when the process is killed right after: it is noted
/// before, and taken back for what stays.
void JobRun::RemoveSources(Results& results)
{
    const auto note = [&](JobFile& file, bool isMoved) {
        file.sourceDeleted = isMoved;
        m_records.Note(file);
    };
    const auto announced = [&](const QList<JobFile*>& files) {
        for (JobFile* file : files)
            note(*file, true);
        static_cast<void>(m_records.Flush());
    };
    SourceRemoval(m_state, *m_control).Remove(announced, [&](JobFile& file) {
        // Another import that moves it may have been faster.
        if (!file.sourceDeleted)
            note(file, !ExistsOnDisk(file.source));
        results.Tell(file);
    });
}

void JobRun::Prune(const Base::RootedFolder& cloud)
{
    for (const CopyRecord& orphan : m_state.orphans) {
        const std::filesystem::path copy =
            Native(orphan.target.mid(m_state.cloudFolder.size() + 1));
        Base::FileStatus status;
        // What somebody changed is not this library's any more.
        if (!cloud.Status(copy, status) || status.kind != Base::FileKind::File ||
            !IsSameAsRecorded(orphan.targetStamp, orphan.recordedAt, orphan.target,
                              m_state.request.checksum))
            continue;
        QString reason;
        if (!SyncManager::GetInstance()->SaveVersion(orphan.target, &reason))
            m_state.notPruned.insert(orphan.target, reason);
        else if (const Base::FileResult removed = cloud.Remove(copy); !removed)
            m_state.notPruned.insert(orphan.target, QString::fromStdString(removed.Text()));
        else
            m_state.pruned.append(orphan.target);
    }
    m_records.Forget(m_state.pruned);
}

} // namespace Halvern::Jobs
