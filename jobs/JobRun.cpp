// SPDX-License-Identifier: Apache-2.0

#include "JobRun.h"

#include "Closure.h"
#include "FileStamps.h"
#include "LinkPlanning.h"
#include "Orphans.h"
#include "OwnRecords.h"
#include "Paths.h"
#include "Preflight.h"
#include "Pruning.h"
#include "RealPaths.h"
#include "Results.h"
#include "SelectionWalk.h"
#include "SourceRemoval.h"
#include "Targets.h"

#include "corsync/JobError.h"

#include "base/RootedFolder.h"
#include "syncservices/FolderManager.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSet>

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

/// Nobody saved the copy since the stamp was taken.
bool IsStamped(const Base::FileStatus& copy, const FileStamp& stamp)
{
    return copy.kind == Base::FileKind::File && qint64(copy.size) == stamp.bytes &&
           copy.modified == stamp.modified;
}

/// As it was when the job was planned.
qint64 SizeOf(const JobFile& file)
{
    return qint64(file.status.size);
}

void TakeStamps(JobFile& file, const CopyRecord& record)
{
    file.sourceStamp = record.sourceStamp;
    file.targetStamp = record.targetStamp;
    file.recordedAt = record.recordedAt;
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
    // Without its records a job would take copies that somebody changed for anybody's files.
    if (!m_ledger->Error().isEmpty())
        throw JobError(JobErrorKind::DatabaseNotOpened, m_ledger->Error());
    m_state.request.sources = sources.outermost;
    m_state.leftOut = gone;
    m_state.target = target;
    const Base::WorkWatch::Scope watched(*m_control);
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
    // Once the files that linked them are written nothing tells that any more.
    if (!m_state.lostCopies.isEmpty())
        static_cast<void>(m_ledger->NoteLinkedNoMore(m_state.lostCopies));
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
    qint64 files = 0;
    qint64 bytes = 0;
    for (const JobFile& file : m_state.files)
        if (isMeant(file)) {
            ++files;
            bytes += SizeOf(file);
        }
    m_control->BeginPhase(deed == Deed::Copy ? Phase::Copying : Phase::RewritingLinks, files,
                          bytes);
    if (IsStopped())
        return false;
    QList<qsizetype> last;
    for (qsizetype place = 0; place < m_state.files.Size(); ++place) {
        JobFile& file = m_state.files.At(place);
        if (!isMeant(file)) {
            if (deed == Deed::Copy && file.deed == Deed::Nothing)
                results.Tell(file);
            continue;
        }
        if (MakeFile(file, results, FileMaker::Turn::First) == FileMaker::Made::Later)
            last.append(place);
        if (m_state.cancelled)
            return false;
    }
    for (const qsizetype place : std::as_const(last)) {
        MakeFile(m_state.files.At(place), results, FileMaker::Turn::Last);
        if (m_state.cancelled)
            return false;
    }
    return true;
}

FileMaker::Made JobRun::MakeFile(JobFile& file, Results& results, FileMaker::Turn turn)
{
    using Made = FileMaker::Made;
    if (IsStopped())
        return Made::Stopped;
    // Its bytes count once.
    m_control->BeginFile(turn == FileMaker::Turn::First ? SizeOf(file) : 0);
    Made made = Made::Now;
    if (file.deed == Deed::Copy)
        made = m_maker->Make(file, turn);
    else if (!m_maker->Relink(file))
        made = Made::Stopped;
    m_state.cancelled = made == Made::Stopped;
    if (made != Made::Now)
        return made;
    if (file.isDone)
        m_records.Note(file);
    results.Tell(file);
    m_control->EndFile();
    return made;
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
        if (!file.isDone || file.isPending || file.wantedLinks == written.at(place))
            continue;
        file.targetStatus = Base::ReadLinkStatus(Native(file.target));
        if (IsStamped(file.targetStatus, file.targetStamp))
            file.deed = Deed::Relink;
        else
            file.End(Outcome::Failed, Remark::TargetChanged);
    }
}

/// Copies that somebody else made, times that changed without the content, and records that cannot
/// tell by the time whether a file changed. What was saved since it was compared is left to the
/// next import: recorded as it is now, it would pass for what was compared.
void JobRun::NoteUnchanged()
{
    const auto isSound = [](const FileStamp& now, const FileStamp& recorded, qint64 recordedAt) {
        return now.modified == recorded.modified && !IsRacy(recorded, recordedAt);
    };
    for (JobFile& file : m_state.files) {
        if (file.isFolder || file.outcome != Outcome::Unchanged || file.isDone || file.wasMoved)
            continue;
        // What was adopted is not in the ledger yet.
        const CopyRecord* record = file.record && file.record->id >= 0 ? &*file.record : nullptr;
        const bool isAsBefore = record && record->origin == OriginOf(file, m_state) &&
                                record->isRewritePending == file.isPending;
        const bool isRead =
            isAsBefore && (!file.linksKnown || (record->readers == file.readers &&
                                                record->linksState == file.linksState));
        const bool areSound =
            record &&
            isSound(StampOf(file.source, false), record->sourceStamp, record->recordedAt) &&
            isSound(StampOf(file.target, false), record->targetStamp, record->recordedAt);
        if (isRead && areSound) {
            // With the hashes, when a move notes it again.
            TakeStamps(file, *record);
            continue;
        }
        // What this project cannot read another one has read.
        if (record && file.linksKnown && file.linksState != LinksState::Read &&
            PathKey(record->project) != PathKey(m_state.target)) {
            TakeStamps(file, *record);
            continue;
        }
        if (areSound) {
            TakeStamps(file, *record);
            m_records.Note(file);
            continue;
        }
        file.recordedAt = ClockNow();
        file.sourceStamp = StampOf(file.source, true);
        file.targetStamp = StampOf(file.target, true);
        // A hash that was cut off says nothing.
        if (IsStopped())
            return record ? TakeStamps(file, *record) : void();
        if (!IsStamped(Base::ReadLinkStatus(Native(file.target)), StampOf(file.targetStatus)))
            file.End(Outcome::Failed, Remark::TargetChanged);
        else if (Base::ReadFileStatus(Native(file.source)) == file.status)
            m_records.Note(file);
        else if (record)
            TakeStamps(file, *record);
    }
}

void JobRun::Finish(Results& results, const Base::RootedFolder& cloud)
{
    m_control->BeginPhase(Phase::Recording, 0);
    // What was done is recorded also when the job was cancelled.
    m_control->GoOn();
    const bool recorded = m_records.Flush();
    static_cast<void>(m_records.Finish());
    // Copies that could not be made anew link what they linked.
    if (!m_state.cancelled)
        m_state.orphans = Orphans(m_state, m_copies).Find();
    if (m_state.request.move)
        MoveSources(results, cloud, recorded);
    m_state.pruned.clear();
    m_state.notPruned.clear();
    if (m_state.request.prune && !m_state.cancelled) {
        Pruning(m_state).Prune(cloud);
        m_records.Forget(m_state.pruned);
    }
    static_cast<void>(m_records.Flush());
    results.TellRest();
}

/// Deletes sources when all that a power cut could take is on the disk, and says why none is
/// deleted otherwise.
void JobRun::MoveSources(Results& results, const Base::RootedFolder& cloud, bool isRecorded)
{
    if (!isRecorded || m_state.cancelled || !DatabaseError().isEmpty()) {
        SourceRemoval(m_state, *m_control).KeepRest();
        return;
    }
    const Base::FileResult secured = SecureCopies(cloud);
    if (secured) {
        RemoveSources(results);
        return;
    }
    m_control->Report(
        {FileLink::Stage::CopyFiles,
         FileLink::ProblemKind::SourceNotDeleted,
         {},
         QStringLiteral("No source was deleted: ") + QString::fromStdString(secured.Text()),
         {}});
    SourceRemoval(m_state, *m_control).KeepRest();
}

/// A source may go when its copy still stands under its name, and will after a power cut, too.
/// Copies that are older than this job may not have reached the disk either.
Base::FileResult JobRun::SecureCopies(const Base::RootedFolder& cloud)
{
    // Names that this job gave are flushed folder by folder.
    QSet<QString> folders;
    const auto addFolders = [&](QString folder) {
        for (; folder.size() > m_state.cloudFolder.size() && !folders.contains(folder);
             folder = FolderAbove(folder))
            folders.insert(folder);
    };
    for (JobFile& file : m_state.files) {
        const bool isCopy = file.isDone || file.outcome == Outcome::Unchanged;
        if (file.isFolder || file.wasMoved || file.isPending || !isCopy)
            continue;
        const std::filesystem::path copy = BelowCloudFolder(file.target, m_state);
        Base::FileStatus status;
        if (!cloud.Status(copy, status) || !IsStamped(status, file.targetStamp)) {
            file.End(Outcome::Failed, Remark::TargetChanged);
            continue;
        }
        const bool wasFlushed = file.taken.Exists() || file.linksRewritten;
        if (const Base::FileResult result = wasFlushed ? Base::FileResult() : cloud.Flush(copy);
            !result)
            return result;
        addFolders(FolderAbove(file.target));
    }
    for (const QString& folder : std::as_const(folders))
        if (Base::FileResult result = cloud.Flush(BelowCloudFolder(folder, m_state)); !result)
            return result;
    return cloud.Flush({});
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
        return m_records.Flush();
    };
    SourceRemoval(m_state, *m_control).Remove(announced, [&](JobFile& file) {
        // Another import that moves it may have been faster.
        if (!file.sourceDeleted)
            note(file, !ExistsOnDisk(file.source));
        if (file.sourceDeleted) {
            file.sourceStays = SourceStays::No;
            file.staysFor.clear();
        }
        results.Tell(file);
    });
}

} // namespace Halvern::Jobs
