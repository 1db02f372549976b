// SPDX-License-Identifier: Apache-2.0

#include "Closure.h"

#include "ExcludeRules.h"
#include "FileStamps.h"
#include "Paths.h"
#include "Targets.h"

#include "syncservices/SyncLibUtil.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

namespace Halvern::Jobs {

using SyncServices::SyncLibUtil;

Closure::Closure(JobState& job, JobControl& control, LinkReader& reader, Boundary& boundary,
                 const CopyIndex& copies)
    : m_job(job), m_control(control), m_reader(reader), m_boundary(boundary), m_copies(copies)
{
    for (qsizetype i = 0; i < job.leftOut.size(); ++i)
        if (job.leftOut.at(i).remark == Remark::Excluded ||
            job.leftOut.at(i).remark == Remark::OwnRecord)
            m_excluded.insert(PathKey(job.leftOut.at(i).source), i);
        // Nobody knows what a list that cannot be read would keep out.
        else if (job.leftOut.at(i).remark == Remark::NotReadable &&
                 NameOf(job.leftOut.at(i).source) == ExcludeRules::FileName)
            m_excluded.insert(PathKey(FolderAbove(job.leftOut.at(i).source)), i);
}

bool Closure::Find()
{
    CheckGivenLinks();
    const qsizetype selected = m_job.files.Size();
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        if (m_control.IsCancelRequested())
            return false;
        if (!IsOpened(place, selected))
            continue;
        TakeLinks(m_job.files.At(place));
        Follow(place);
    }
    if (m_job.request.move)
        FindOtherHolders();
    return true;
}

/// Where a link leads, when that is a file that was given; -1.
qsizetype Closure::GivenFile(const QString& link, const QString& holder) const
{
    const qsizetype place = m_job.files.Find(ResolveLink(link, holder));
    return place >= 0 && m_job.files.At(place).isSelected && !m_job.files.At(place).isFolder ? place
                                                                                             : -1;
}

/// What another run has brought along with files that are moved now still links these.
void Closure::FindOtherHolders()
{
    for (const CopyRecord& record : m_copies.All()) {
        const auto leadsToGiven = [&](const SyncServices::FileLink& link) {
            return GivenFile(link.Path, record.source) >= 0;
        };
        LinkReader::Links links = record.sourceLinks;
        if (record.isMoved || std::none_of(links.begin(), links.end(), leadsToGiven) ||
            m_job.files.Find(record.source) >= 0 || !ExistsOnDisk(record.source))
            continue;
        LinkReader::Links now;
        m_control.Mute(true);
        if (!IsSameAsRecorded(record.sourceStamp, record.recordedAt, record.source, false) &&
            m_reader.Read(record.source, now))
            links = now;
        m_control.Mute(false);
        for (const SyncServices::FileLink& link : std::as_const(links))
            if (const qsizetype place = GivenFile(link.Path, record.source); place >= 0)
                m_job.otherHolders.append({record.source, place});
    }
}

/// A folder from somewhere may hold symbolic links to what its receiver keeps private.
void Closure::CheckGivenLinks()
{
    for (JobFile& file : m_job.files) {
        if (file.isFolder || !QFileInfo(file.source).isSymbolicLink())
            continue;
        const Boundary::Answer answer = m_boundary.Check(file.source);
        file.outside = answer.outside;
        if (!answer.allowed)
            file.End(Outcome::Refused, answer.remark);
        else if (!IsWhereItWasJudged(file))
            file.End(Outcome::Failed, Remark::ChangedWhileCopied);
    }
}

/// The file that is going to be copied is known by its status; a link set in between would have it
/// be another one than what was judged.
bool Closure::IsWhereItWasJudged(const JobFile& file)
{
    return file.status.kind != Base::FileKind::File ||
           m_realFiles.IsAt(m_boundary.RealPathOf(file.source), file.status);
}

bool Closure::IsOpened(qsizetype place, qsizetype selected) const
{
    const JobFile& file = m_job.files.At(place);
    return !file.isFolder && !file.IsOut() && (place < selected || !m_job.request.directLinksOnly);
}

void Closure::TakeLinks(JobFile& file)
{
    const QStringList& types = m_job.request.fileTypes;
    if (!types.isEmpty() && !SyncLibUtil::IsInFileTypeList(file.source, types))
        return;
    file.linksKnown = true;
    // Whatever is put beside it from now on is noticed by the next import.
    file.readers = m_reader.ReadersOf(file.source, {});
    file.isUnknownFormat = file.readers.isEmpty();
    if (!file.isUnknownFormat && Restore(file))
        return;
    LinkReader::Links links;
    const bool isRead = !file.isUnknownFormat && m_reader.Read(file.source, links);
    file.linksState = isRead                 ? LinksState::Read
                      : file.isUnknownFormat ? LinksState::UnknownFormat
                                             : LinksState::Failed;
    for (const SyncServices::FileLink& link : std::as_const(links))
        file.links.append({link, {}, -1, LinkState::Found});
    file.readers = m_reader.ReadersOf(file.source, links);
    if (!isRead)
        RecallLinks(file);
}

/// A format that a plug-in has read is none without links because the plug-in is gone.
void Closure::RecallLinks(JobFile& file) const
{
    for (const CopyRecord* record : m_copies.OfSource(file.source)) {
        if (record->readers.isEmpty())
            continue;
        if (file.isUnknownFormat)
            file.readers = record->readers;
        file.linksState = LinksState::Failed;
        for (const SyncServices::FileLink& link : record->sourceLinks)
            file.earlierLinks.append(ResolveLink(link.Path, file.source));
        return;
    }
}

bool Closure::Restore(JobFile& file) const
{
    if (m_job.request.reread)
        return false;
    for (const CopyRecord* record : m_copies.OfSource(file.source)) {
        // A file that was saved again may find others beside it, though it holds what it held.
        if (record->linksState != LinksState::Read ||
            record->readers != m_reader.ReadersOf(file.source, record->sourceLinks) ||
            record->sourceStamp.modified != file.status.modified ||
            !IsSameAsRecorded(record->sourceStamp, record->recordedAt, file.source,
                              m_job.request.checksum, nullptr))
            continue;
        for (const SyncServices::FileLink& link : record->sourceLinks)
            file.links.append({link, {}, -1, LinkState::Found});
        file.readers = record->readers;
        return true;
    }
    return false;
}

void Closure::Follow(qsizetype holder)
{
    for (qsizetype i = 0; i < m_job.files.At(holder).links.size(); ++i) {
        const QString text = m_job.files.At(holder).links.at(i).stored.Path;
        const QString path =
            text.isEmpty() ? QString() : ResolveLink(text, m_job.files.At(holder).source);
        const qsizetype member = path.isEmpty() ? -1 : MemberFor(path);
        JobLink& link = m_job.files.At(holder).links[i];
        link.file = path;
        link.member = member;
        if (!IsLocalPath(path))
            link.state = LinkState::Url;
        else if (member < 0 || m_job.files.At(member).outcome == Outcome::Missing)
            link.state = LinkState::Missing;
    }
}

qsizetype Closure::MemberFor(const QString& path)
{
    const qsizetype known = m_job.files.Find(path);
    return known >= 0 ? known : m_job.files.Add(Linked(path));
}

JobFile Closure::Linked(const QString& path)
{
    JobFile file;
    file.source = path;
    if (!IsLocalPath(path)) {
        file.End(Outcome::Url);
        return file;
    }
    file.status = Base::ReadFileStatus(Native(path));
    switch (file.status.kind) {
    case Base::FileKind::Missing:
        TakeMoved(file);
        return file;
    case Base::FileKind::Folder:
        file.End(Outcome::Skipped, Remark::LinkedFolder);
        return file;
    case Base::FileKind::Other:
    case Base::FileKind::Link:
    case Base::FileKind::File:
        break;
    }
    const Boundary::Answer verdict = m_boundary.Check(path);
    file.outside = verdict.outside;
    if (!verdict.allowed)
        file.End(Outcome::Refused, verdict.remark);
    else if (file.status.kind != Base::FileKind::File)
        file.End(Outcome::Skipped, Remark::NoFile);
    else if (!IsWhereItWasJudged(file))
        file.End(Outcome::Failed, Remark::ChangedWhileCopied);
    else if (const LeftOutItem* item = ExcludedBy(path))
        file.End(Outcome::Skipped, item->remark, item->detail);
    return file;
}

/// What a move of this project has deleted is where the move has put it.
void Closure::TakeMoved(JobFile& file) const
{
    const CopyRecord* record = m_copies.OfProject(file.source, m_job.target);
    file.wasMoved = record && record->isMoved && IsFileAt(record->target, m_job.cloudFolder);
    file.End(file.wasMoved ? Outcome::Unchanged : Outcome::Missing);
    if (record && file.wasMoved)
        file.target = record->target;
}

const LeftOutItem* Closure::ExcludedBy(const QString& path) const
{
    if (m_excluded.isEmpty())
        return nullptr;
    for (QString part = path; part.size() > 1;) {
        const auto found = m_excluded.constFind(PathKey(part));
        if (found != m_excluded.constEnd())
            return m_job.leftOut.at(*found).detail.endsWith(QStringLiteral("(built in)"))
                       ? nullptr
                       : &m_job.leftOut.at(*found);
        const qsizetype slash = part.lastIndexOf(u'/');
        part.truncate(std::max<qsizetype>(slash, 0));
    }
    return nullptr;
}

} // namespace Halvern::Jobs
