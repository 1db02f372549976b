// SPDX-License-Identifier: Apache-2.0

#include "ThreeWays.h"

#include "FileStamps.h"
#include "Paths.h"

#include "base/FileCopy.h"

#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <algorithm>

namespace Halvern::Jobs {

namespace {

bool HoldTheSame(const FileStamp& a, const FileStamp& b)
{
    return a.bytes >= 0 && a.bytes == b.bytes && !a.hash.isEmpty() && a.hash == b.hash;
}

bool AreOfOneSize(const QString& a, const QString& b)
{
    return QFileInfo(a).size() == QFileInfo(b).size();
}

/// As if an earlier import had made it with these links: later ones may change them.
CopyRecord AdoptedRecord(const JobFile& file, const JobState& job,
                         const QList<SyncServices::FileLink>& links)
{
    CopyRecord record;
    record.project = job.target;
    record.source = file.source;
    record.target = file.target;
    record.targetLinks = links;
    for (const JobLink& link : file.links)
        record.sourceLinks.append(link.stored);
    record.readers = file.readers;
    record.origin = CopyOrigin::Linked;
    return record;
}

} // namespace

Standing ThreeWays::Of(JobFile& file) const
{
    file.record.reset();
    const CopyRecord* record = m_copies.OfTarget(file.target);
    if (record && PathKey(record->source) == PathKey(file.source))
        file.record = *record;
    if (!ExistsOnDisk(file.target))
        return Standing::Free;
    file.targetStatus = Base::ReadLinkStatus(Native(file.target));
    if (IsFolder(file.target))
        return Standing::Folder;
    if (QFileInfo(file.target).isSymbolicLink())
        return Standing::Foreign;
    if (!file.record)
        return HasSameContent(file) || HoldsTheSource(file) || HoldsLinksOnTheWay(file, false)
                   ? Standing::SameContent
                   : Standing::Foreign;
    const bool checksum = m_job.request.checksum;
    const bool sourceSame = IsSameAsRecorded(file.record->sourceStamp, file.record->recordedAt,
                                             file.source, checksum, nullptr);
    const bool copySame = IsSameAsRecorded(file.record->targetStamp, file.record->recordedAt,
                                           file.target, checksum, nullptr);
    if (sourceSame && copySame)
        return Standing::Ours;
    if (copySame)
        return Standing::SourceChanged;
    if (!sourceSame && HasSameContent(file))
        return Standing::SameContent;
    if (HoldsTheSource(file) || HoldsLinksOnTheWay(file, sourceSame))
        return Standing::SameContent;
    return sourceSame ? Standing::CopyChanged : Standing::BothChanged;
}

/// What holds the bytes of the source, somebody has copied by other means: only its links are still
/// to be rewritten.
bool ThreeWays::HoldsTheSource(JobFile& file) const
{
    if (file.rewrites.isEmpty() || IsOfAnotherProject(file.target) ||
        !AreOfOneSize(file.source, file.target))
        return false;
    const qint64 now = ClockNow();
    const FileStamp source = StampOf(file.source, true);
    const FileStamp target = StampOf(file.target, true);
    if (!HoldTheSame(source, target))
        return false;
    QList<SyncServices::FileLink> links;
    for (const JobLink& link : std::as_const(file.links))
        links.append(link.stored);
    Adopt(file, links, source, target, now);
    return true;
}

/// Each link says what it says in the source, what it is to say, or what was recorded. `rewrites`
/// would make the file of its source.
bool ThreeWays::AreLinksOnTheWay(const JobFile& file, const LinkReader::Links& links,
                                 LinkReader::Links& rewrites) const
{
    if (links.isEmpty() || links.size() != file.links.size())
        return false;
    for (qsizetype i = 0; i < links.size(); ++i) {
        const QString& path = links.at(i).Path;
        const SyncServices::FileLink& stored = file.links.at(i).stored;
        const bool isRecorded = file.record && i < file.record->targetLinks.size() &&
                                file.record->targetLinks.at(i).RefId == stored.RefId &&
                                file.record->targetLinks.at(i).Path == path;
        if (links.at(i).RefId != stored.RefId ||
            !(isRecorded || path == stored.Path || path == file.wantedLinks.at(i).Path))
            return false;
        if (path == stored.Path)
            continue;
        rewrites.append(stored);
        rewrites.last().Path = path;
    }
    return true;
}

/// A copy of the recorded source with the recorded links has the recorded size, unless they were
/// still to be written. To make one, and compare it with a copy of another size, would take long
/// for nothing.
bool ThreeWays::HasAnotherSize(const JobFile& file, const LinkReader::Links& links)
{
    const CopyRecord& record = *file.record;
    return !record.isRewritePending && qint64(file.targetStatus.size) != record.targetStamp.bytes &&
           std::equal(links.begin(), links.end(), record.targetLinks.begin(),
                      record.targetLinks.end(),
                      [](const SyncServices::FileLink& a, const SyncServices::FileLink& b) {
                          return a.Path == b.Path;
                      });
}

/// An import that was killed, or met a disk that fails, may have written links of the copy without
/// recording it. Nothing else differs from the source then.
bool ThreeWays::HoldsLinksOnTheWay(JobFile& file, bool isSourceRecorded) const
{
    const bool isRead = file.linksKnown && file.linksState == LinksState::Read;
    if (!isRead || file.links.isEmpty() || IsOfAnotherProject(file.target))
        return false;
    const qint64 now = ClockNow();
    LinkReader::Links links;
    LinkReader::Links rewrites;
    m_control.Mute(true);
    const bool areRead = m_reader.Read(file.target, links);
    m_control.Mute(false);
    if (!areRead || !AreLinksOnTheWay(file, links, rewrites) || rewrites.isEmpty() ||
        (isSourceRecorded && HasAnotherSize(file, links)))
        return false;
    const QTemporaryDir folder;
    const QString made = folder.filePath(QFileInfo(file.target).fileName());
    if (!folder.isValid() || !MakeCopy(file, rewrites, made))
        return false;
    const FileStamp target = StampOf(file.target, true);
    if (!HoldTheSame(StampOf(made, true), target))
        return false;
    const std::optional<CopyRecord> former = file.record;
    Adopt(file, links, StampOf(file.source, true), target, now);
    if (former)
        file.record->origin = former->origin;
    return true;
}

/// Whatever source it was made of.
bool ThreeWays::IsOfAnotherProject(const QString& target) const
{
    const CopyRecord* record = m_copies.OfTarget(target);
    return record && PathKey(record->project) != PathKey(m_job.target);
}

void ThreeWays::Adopt(JobFile& file, const QList<SyncServices::FileLink>& links,
                      const FileStamp& source, const FileStamp& target, qint64 recordedAt) const
{
    file.record = AdoptedRecord(file, m_job, links);
    file.record->sourceStamp = source;
    file.record->targetStamp = target;
    file.record->recordedAt = recordedAt;
}

/// A copy whose links are rewritten is made to be compared.
bool ThreeWays::HasSameContent(JobFile& file) const
{
    const qint64 now = ClockNow();
    if (file.rewrites.isEmpty() && !AreOfOneSize(file.source, file.target))
        return false;
    const QTemporaryDir folder;
    const QString made =
        file.rewrites.isEmpty() ? file.source : folder.filePath(QFileInfo(file.target).fileName());
    if (!file.rewrites.isEmpty() && (!folder.isValid() || !MakeCopy(file, file.rewrites, made)))
        return false;
    const FileStamp copy = StampOf(made, true);
    const FileStamp target = StampOf(file.target, true);
    if (!HoldTheSame(copy, target))
        return false;
    // The files that its links lead to may get other places still.
    const bool isRead = file.linksKnown && file.linksState == LinksState::Read;
    const bool mayBeRelinked = file.record || !file.links.isEmpty();
    if (isRead && mayBeRelinked && !IsOfAnotherProject(file.target)) {
        // What is recorded is neither side any more.
        const std::optional<CopyRecord> former = file.record;
        Adopt(file, file.wantedLinks, file.rewrites.isEmpty() ? copy : StampOf(file.source, true),
              target, now);
        if (former)
            file.record->origin = former->origin;
    }
    return true;
}

bool ThreeWays::MakeCopy(const JobFile& file, const LinkReader::Links& rewrites,
                         const QString& copy) const
{
    if (!Base::CopyFileBytes(Native(file.source), Native(copy)))
        return false;
    m_control.Mute(true);
    const bool written = m_reader.Write(copy, rewrites);
    m_control.Mute(false);
    // Some plug-ins say that they wrote, and did not.
    return written && !HoldTheSame(StampOf(copy, true), StampOf(file.source, true));
}

} // namespace Halvern::Jobs
