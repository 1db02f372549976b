// SPDX-License-Identifier: Apache-2.0

#include "Records.h"

#include "LinkPlanning.h"
#include "Orphans.h"
#include "Paths.h"

#include "syncservices/FolderManager.h"
#include "syncservices/SyncPrivate.h"

#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

using SyncFolderManagerLib::FolderManager;
using SyncServices::FileLink;
using SyncServices::FileMapping;
using SyncServices::SyncPrivate;

namespace {

constexpr qint64 LongestWait = 1000;
constexpr qsizetype MostNoted = 2000;

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

void Records::Note(const JobFile& file)
{
    m_noted.append(RecordOf(file, m_job));
    if (!m_sinceWritten.isValid())
        m_sinceWritten.start();
    if (m_noted.size() >= MostNoted || m_sinceWritten.hasExpired(LongestWait))
        static_cast<void>(Flush());
}

bool Records::Flush()
{
    m_sinceWritten.invalidate();
    const bool written = m_noted.isEmpty() || m_ledger.Write(m_noted);
    m_noted.clear();
    return written;
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
