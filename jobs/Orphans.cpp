// SPDX-License-Identifier: Apache-2.0

#include "Orphans.h"

#include "FileStamps.h"
#include "LinkPlanning.h"
#include "Paths.h"
#include "RealPaths.h"

#include "base/Directory.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Jobs {

namespace {

/// The files that a copy leads to, as it was made.
QStringList RecordedLinks(const CopyRecord& record)
{
    QStringList targets = record.linkedTargets;
    // A link whose file was gone may lead to its copy all the same.
    for (const SyncServices::FileLink& link : record.targetLinks)
        targets.append(ResolveLink(link.Path, record.target));
    return targets;
}

bool IsUnread(const LeftOutItem& item, const QString& source)
{
    return item.IsFailure() && IsInFolder(source, item.source);
}

/// What lies in a folder that cannot be looked into may be there.
bool IsGone(const QString& file)
{
    return Base::ReadEntry(Native(file)).kind == Base::EntryKind::Missing;
}

} // namespace

CopyOrigin OriginOf(const JobFile& file, const JobState& job)
{
    const bool isUsedAsItIs =
        file.outcome == Outcome::Unchanged || file.outcome == Outcome::InPlace;
    if (isUsedAsItIs && file.record && PathKey(file.record->project) != PathKey(job.target))
        return file.record->origin;
    const bool wasSelected = file.record && file.record->origin == CopyOrigin::Selected;
    // What only the links of the sources name is asked for by itself, when nothing else is wanted.
    return file.isSelected || job.request.linksOnly || wasSelected ? CopyOrigin::Selected
                                                                   : CopyOrigin::Linked;
}

Orphans::Orphans(const JobState& job, const CopyIndex& copies)
    : m_job(job), m_copies(copies), m_keys(job.cloudFolder)
{
    for (const QString& source : job.request.sources)
        m_sources.insert(PathKey(source));
    for (const JobFile& file : job.files)
        if (!file.isDropped && !file.target.isEmpty())
            m_claimed.insert(m_keys.Of(file.target));
}

QList<Orphan> Orphans::Find()
{
    TakeCandidates();
    if (m_candidates.isEmpty())
        return {};
    FollowLost();
    MarkLinked();
    QList<Orphan> orphans;
    for (const CopyRecord& record : m_copies.All()) {
        const auto candidate = m_candidates.constFind(&record);
        if (candidate == m_candidates.constEnd())
            continue;
        const bool isLinked = m_linked.contains(PathKey(record.target));
        if (!isLinked || *candidate == Why::SourceGone)
            orphans.append({record, isLinked});
    }
    return orphans;
}

QStringList Orphans::Lost() const
{
    QStringList lost;
    for (auto it = m_candidates.begin(); it != m_candidates.end(); ++it)
        if (*it == Why::LinkedNoMore && it.key()->origin == CopyOrigin::Linked)
            lost.append(it.key()->target);
    return lost;
}

bool Orphans::IsOfThisProject(const CopyRecord& record) const
{
    return PathKey(record.project) == PathKey(m_job.target);
}

bool Orphans::IsSourceGone(const CopyRecord& record) const
{
    return !NearestOf(m_sources, PathKey(record.source)).isEmpty() && IsGone(record.source) &&
           std::none_of(m_job.leftOut.begin(), m_job.leftOut.end(),
                        [&](const LeftOutItem& item) { return IsUnread(item, record.source); });
}

/// A copy that its owner has edited is no leftover.
bool Orphans::IsSuperseded(const CopyRecord& record) const
{
    const qsizetype place = m_job.files.Find(record.source);
    if (place < 0 || !HasPlace(m_job.files.At(place)))
        return false;
    const QString& target = m_job.files.At(place).target;
    return PathKey(target) != PathKey(record.target) &&
           QFileInfo(target).path() == QFileInfo(record.target).path() && IsAsRecorded(record);
}

/// What could not be read or brought this time is no orphan for that.
bool Orphans::MayHaveLostItsLinks(const CopyRecord& record) const
{
    if (record.origin == CopyOrigin::Selected)
        return false;
    const qsizetype place = m_job.files.Find(record.source);
    return place < 0 || m_job.files.At(place).isDropped ||
           m_job.files.At(place).outcome == Outcome::Missing || HasPlace(m_job.files.At(place));
}

bool Orphans::StandsUnclaimed(const CopyRecord& record) const
{
    QString detail;
    return !record.isMoved && !m_copies.WasMoved(record.source, m_job.target) &&
           !m_claimed.contains(m_keys.Of(record.target)) && ExistsOnDisk(record.target) &&
           ObstacleOnTheWay(record.target, m_job.cloudFolder, detail) == Remark::None;
}

bool Orphans::IsAsRecorded(const CopyRecord& record) const
{
    return IsSameAsRecorded(record.targetStamp, record.recordedAt, record.target,
                            m_job.request.checksum);
}

/// A copy that is not written keeps the links that it has.
QStringList Orphans::LinksNow(const JobFile& file) const
{
    QStringList targets;
    for (const JobLink& link : file.links)
        targets.append(PlaceOf(link, file, m_job.files));
    for (const SyncServices::FileLink& link : file.wantedLinks)
        targets.append(ResolveLink(link.Path, file.target));
    const bool isRead = file.linksKnown && file.linksState == LinksState::Read;
    const bool isWritten = file.deed != Deed::Nothing || file.isDone;
    const CopyRecord* record = m_copies.OfTarget(file.target);
    if (record && (!isRead || !isWritten || file.isPending))
        targets += RecordedLinks(*record);
    return targets;
}

void Orphans::TakeCandidates()
{
    const auto take = [&](const CopyRecord& record, Why why) {
        if (StandsUnclaimed(record)) {
            m_candidates.insert(&record, why);
            m_toFollow.append(&record);
        }
    };
    for (const CopyRecord& record : m_copies.All()) {
        if (!IsOfThisProject(record))
            continue;
        if (IsSourceGone(record))
            take(record, Why::SourceGone);
        else if (record.origin == CopyOrigin::LinkedNoMore && MayHaveLostItsLinks(record))
            take(record, Why::LinkedNoMore);
        else if (IsSuperseded(record))
            take(record, Why::Superseded);
    }
    for (const JobFile& file : m_job.files) {
        const bool isUntouched = file.deed == Deed::Nothing && !file.isDone;
        if (isUntouched || !file.record || file.record->id < 0 || !IsOfThisProject(*file.record))
            continue;
        const QStringList links = LinksNow(file);
        const QSet<QString> now(links.begin(), links.end());
        QStringList lost = RecordedLinks(*file.record);
        lost.removeIf([&](const QString& target) { return now.contains(target); });
        TakeLost(lost);
    }
}

void Orphans::TakeLost(const QStringList& targets)
{
    for (const QString& target : targets) {
        const CopyRecord* record = m_copies.OfTarget(target);
        if (!record || m_candidates.contains(record) || !IsOfThisProject(*record) ||
            !MayHaveLostItsLinks(*record) || !StandsUnclaimed(*record))
            continue;
        m_candidates.insert(record, Why::LinkedNoMore);
        m_toFollow.append(record);
    }
}

/// What orphans link may be orphaned with them.
void Orphans::FollowLost()
{
    while (!m_toFollow.isEmpty())
        TakeLost(RecordedLinks(*m_toFollow.takeLast()));
}

void Orphans::MarkLinked()
{
    for (const CopyRecord& record : m_copies.All()) {
        const bool keepsItsLinks =
            m_candidates.contains(&record)
                ? !IsAsRecorded(record)
                : !m_claimed.contains(m_keys.Of(record.target)) && ExistsOnDisk(record.target);
        if (keepsItsLinks)
            Mark(RecordedLinks(record));
    }
    for (const JobFile& file : m_job.files)
        if (!file.isFolder && !file.isDropped && !file.target.isEmpty())
            Mark(LinksNow(file));
}

void Orphans::Mark(QStringList targets)
{
    while (!targets.isEmpty()) {
        const QString target = targets.takeLast();
        const QString key = PathKey(target);
        if (m_linked.contains(key))
            continue;
        m_linked.insert(key);
        const CopyRecord* record = m_copies.OfTarget(target);
        if (record && m_candidates.contains(record))
            targets += RecordedLinks(*record);
    }
}

} // namespace Halvern::Jobs
