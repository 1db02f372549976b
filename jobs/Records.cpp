// SPDX-License-Identifier: Apache-2.0

#include "Records.h"

#include "FileStamps.h"
#include "LinkPlanning.h"
#include "Orphans.h"
#include "Paths.h"
#include "RequestJson.h"
#include "Results.h"

#include "syncservices/FolderManager.h"
#include "syncservices/SyncPrivate.h"

#include <QtCore/QFileInfo>

#include <optional>
#include <utility>

namespace Halvern::Jobs {

using SyncFolderManagerLib::FolderManager;
using SyncServices::FileLink;
using SyncServices::FileMapping;
using SyncServices::SyncPrivate;

namespace {

QList<FileLink> StoredLinks(const JobFile& file)
{
    QList<FileLink> links;
    for (const JobLink& link : file.links)
        links.append(link.stored);
    return links;
}

QStringList LinkedTargets(const JobFile& file, const JobFiles& files)
{
    QStringList targets;
    for (const JobLink& link : file.links) {
        const QString place = PlaceOf(link, file, files);
        if (!place.isEmpty())
            targets.append(place);
    }
    targets.removeDuplicates();
    return targets;
}

bool HasSameContent(const FileStamp& a, const FileStamp& b)
{
    return a.bytes == b.bytes && (a.hash.isEmpty() ? a.modified == b.modified : a.hash == b.hash);
}

/// Nothing when nothing is done to it.
std::optional<RunAction> ActionOf(const JobFile& file, const JobState& job)
{
    if (file.isFolder || file.isDropped)
        return std::nullopt;
    switch (file.deed) {
    case Deed::Copy:
        return file.targetStatus.Exists() && file.outcome != Outcome::Renamed ? RunAction::Replace
                                                                              : RunAction::Copy;
    case Deed::Relink:
        return RunAction::Relink;
    case Deed::Nothing:
        break;
    }
    return job.request.move && file.isSelected && file.outcome == Outcome::Unchanged
               ? std::optional(RunAction::Move)
               : std::nullopt;
}

/// Nobody asked for the links or could read them, and neither side is another than when they were
/// recorded.
bool KeepsRecordedLinks(const JobFile& file)
{
    const bool isRead = file.linksKnown && file.linksState == LinksState::Read;
    return !isRead && file.record && file.outcome == Outcome::Unchanged &&
           HasSameContent(file.sourceStamp, file.record->sourceStamp) &&
           HasSameContent(file.targetStamp, file.record->targetStamp);
}

} // namespace

std::unique_ptr<Ledger> OpenLedger()
{
    const SyncServices::ServicesSettings& settings = FolderManager::GetInstance()->GetSettings();
    return Ledger::Open(settings.databaseFile,
                        SyncPrivate::GetCurrentUserAuthenticationConfigurationId(),
                        settings.databaseBusyTimeout, false);
}

CopyRecord RecordOf(const JobFile& file, const JobState& job)
{
    CopyRecord record;
    // A copy that this job did not make stays that of its source, and of its project.
    record.project = file.record ? file.record->project : job.target;
    record.source = file.record ? file.record->source : file.source;
    record.target = file.target;
    record.sourceStamp = file.sourceStamp;
    record.targetStamp = file.targetStamp;
    record.recordedAt = file.recordedAt;
    record.isRewritePending = file.isPending;
    record.isMoved = file.sourceDeleted;
    record.origin = OriginOf(file, job);
    if (KeepsRecordedLinks(file)) {
        record.sourceLinks = file.record->sourceLinks;
        record.targetLinks = file.record->targetLinks;
        record.linkedTargets = file.record->linkedTargets;
        record.linksState = file.linksKnown ? file.linksState : file.record->linksState;
        record.readers = file.linksKnown ? file.readers : file.record->readers;
        record.isRewritePending = file.record->isRewritePending;
        return record;
    }
    record.sourceLinks = StoredLinks(file);
    record.targetLinks = file.wantedLinks;
    record.linkedTargets = LinkedTargets(file, job.files);
    // What it linked it may link still.
    if (file.record && !(file.linksKnown && file.linksState == LinksState::Read))
        record.linkedTargets += file.record->linkedTargets;
    record.linkedTargets.removeDuplicates();
    // Links that nobody asked for are read when somebody does.
    record.linksState = file.linksKnown ? file.linksState : LinksState::Failed;
    record.readers = file.readers;
    return record;
}

bool Records::Begin(const QString& staging, const QList<InterruptedRun>& interrupted,
                    const QList<CopyRecord>& taken)
{
    QList<RunFile> planned;
    for (JobFile& file : m_job.files) {
        const std::optional<RunAction> action = ActionOf(file, m_job);
        if (!action)
            continue;
        file.isPlanned = true;
        planned.append({m_job.files.PlaceOf(file),
                        file.source,
                        file.target,
                        *action,
                        m_job.request.move && file.isSelected,
                        StampOf(file.status),
                        *action == RunAction::Copy ? Base::FileStatus() : file.targetStatus,
                        file.remark == Remark::LinkSetAside ? file.detail : QString(),
                        RunStep::Planned,
                        {},
                        file.record});
    }
    const RunHeader header{QStringLiteral("import"), m_job.cloudFolder, m_job.target, staging,
                           JsonOf(m_job.request)};
    const SyncServices::ServicesSettings& settings = FolderManager::GetInstance()->GetSettings();
    return m_journal.Begin(header, planned, interrupted, taken,
                           {settings.runHistoryLimit, settings.runHistoryDays});
}

void Records::Note(JobFile& file)
{
    m_noted.append(RecordOf(file, m_job));
    NoteSettled(file);
}

void Records::NoteSettled(JobFile& file)
{
    if (!file.isPlanned)
        return;
    file.isPlanSettled = true;
    m_settled.append({m_job.files.PlaceOf(file), static_cast<int>(OutcomeNow(file, m_job)),
                      file.sourceDeleted, file.targetStamp});
}

bool Records::Commit(const std::vector<const StagedCopy*>& ready)
{
    QList<ReadyFile> announced;
    for (const StagedCopy* staged : ready)
        announced.append(
            {m_job.files.PlaceOf(*staged->file), staged->version, RecordOf(*staged->file, m_job)});
    const bool written = m_journal.Advance(m_noted, m_settled, announced);
    // What is not written is written with the next.
    if (written)
        Drop();
    return written;
}

void Records::NotePruned(qsizetype orphan)
{
    m_settled.append({m_job.files.Size() + orphan, static_cast<int>(Outcome::Pruned), false, {}});
}

void Records::Drop()
{
    m_noted.clear();
    m_settled.clear();
}

bool Records::AnnouncePruned(const QList<std::pair<CopyRecord, QString>>& orphans)
{
    QList<RunFile> files;
    qint64 position = m_job.files.Size();
    for (const auto& [record, version] : orphans)
        files.append({position++,
                      record.source,
                      record.target,
                      RunAction::Prune,
                      false,
                      record.sourceStamp,
                      Base::ReadLinkStatus(Native(record.target)),
                      {},
                      RunStep::Ready,
                      version,
                      record});
    return m_journal.Advance({}, {}, {}, files);
}

bool Records::End(bool isComplete)
{
    for (JobFile& file : m_job.files)
        if (file.isPlanned && !file.isPlanSettled && file.deed == Deed::Nothing)
            NoteSettled(file);
    // A run without its end is taken up by the next one, with what it announced.
    if (!m_journal.Advance(m_noted, m_settled, {}))
        return false;
    Drop();
    const RunState state = m_job.cancelled ? RunState::Cancelled
                           : isComplete    ? RunState::Complete
                                           : RunState::Failed;
    return m_journal.End(state, CountsOf(m_job));
}

/// The module records what was copied; true when this was.
bool Records::ShowToModule(JobFile& file) const
{
    FileMapping& mapping = *file.mapping;
    mapping.SetTargetFile(file.target, true);
    mapping.SetTargetFileLinks(file.wantedLinks);
    mapping.SetTargetFileLinksExtractedAtFileDate(QFileInfo(file.target).lastModified());
    mapping.SetFlag(FileMapping::Copied, file.isDone);
    mapping.SetFlag(FileMapping::NeedsRepath, file.isPending);
    // Whatever leads to it, it is written.
    if (file.isDone)
        mapping.SetFlag(FileMapping::Selected, true);
    return file.isDone;
}

bool Records::Finish()
{
    bool any = false;
    for (JobFile& file : m_job.files)
        if (file.mapping && !file.isFolder && !file.isDropped)
            any = ShowToModule(file) || any;
    if (!any)
        return true;
    const bool updated = m_importer.UpdateSyncDatabase();
    return WriteHistory() && updated;
}

/// Other hosts of the module ask it.
bool Records::WriteHistory()
{
    QList<std::shared_ptr<FileMapping>> rows;
    const int user = SyncPrivate::GetCurrentUserAuthenticationConfigurationId();
    for (const JobFile& file : m_job.files) {
        if (!file.isDone || file.isFolder || file.outcome == Outcome::InPlace)
            continue;
        const auto row = std::make_shared<FileMapping>(file.source, file.target, user);
        row->SetSourceFileLinks(StoredLinks(file));
        row->SetTargetFileLinks(file.wantedLinks);
        row->UpdateSourceFileProperties();
        row->UpdateTargetFileProperties();
        row->SetSourceFileLinksExtractedAtFileDate(row->GetSourceFileLastModified());
        row->SetTargetFileLinksExtractedAtFileDate(row->GetTargetFileLastModified());
        row->SetCopyDate(QDateTime::currentDateTime());
        rows.append(row);
    }
    return rows.isEmpty() || m_database.AddAndUpdateFileCopyHistory(rows, {});
}

} // namespace Halvern::Jobs
