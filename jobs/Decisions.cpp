// SPDX-License-Identifier: Apache-2.0

#include "Decisions.h"

#include "FileStamps.h"
#include "LinkPlanning.h"
#include "Orphans.h"
#include "Paths.h"
#include "RealPaths.h"

#include "base/FileAttributes.h"
#include "base/FileHandle.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <algorithm>

namespace Halvern::Jobs {

namespace {

bool HasTarget(const JobFile& file)
{
    return !file.isFolder && !file.isDropped && file.mapping && !file.IsOut();
}

bool IsWanted(const JobFile& file)
{
    return HasTarget(file) || (file.isFolder && !file.isDropped);
}

ConflictAnswer AnswerOf(CollisionPolicy policy)
{
    switch (policy) {
    case CollisionPolicy::Stop:
        return ConflictAnswer::Stop;
    case CollisionPolicy::Keep:
        return ConflictAnswer::Keep;
    case CollisionPolicy::Rename:
        return ConflictAnswer::Rename;
    case CollisionPolicy::Replace:
        return ConflictAnswer::Replace;
    }
    return ConflictAnswer::Stop;
}

/// Otherwise it fails now, so that no link is rewritten to where it will not be.
bool IsReadable(JobFile& file)
{
    Base::Handle handle = Base::NoHandle;
    const Base::FileResult opened = Base::OpenForReading(Native(file.source), handle);
    if (opened)
        Base::Close(handle);
    else
        file.End(Outcome::Failed, Remark::NotReadable, QString::fromStdString(opened.Text()));
    return bool(opened);
}

QDateTime TimeOf(qint64 nanoseconds)
{
    return QDateTime::fromMSecsSinceEpoch(nanoseconds / 1'000'000, Qt::UTC);
}

ConflictSide SideOf(const QString& path, const FileStamp* recorded)
{
    const Base::FileStatus status = Base::ReadFileStatus(Native(path));
    ConflictSide side;
    side.bytes = qint64(status.size);
    side.modified = TimeOf(status.modified);
    if (recorded) {
        side.recordedModified = TimeOf(recorded->modified);
        side.recordedBytes = recorded->bytes;
    }
    return side;
}

/// It comes along, or what it links does, and nothing weightier is to be said of it.
bool MayBeRemarked(const JobFile& file)
{
    if (file.outcome == Outcome::Skipped)
        return file.remark == Remark::OnlyLinksWanted;
    return HasPlace(file) && file.outcome != Outcome::Failed &&
           (file.remark == Remark::None || file.remark == Remark::SharedCopyStays);
}

/// The copy that is there has its links right, and a new one would not.
bool HasBetterLinks(const JobFile& file)
{
    return file.linksKnown && file.linksState != LinksState::Read && file.record &&
           !file.record->targetLinks.isEmpty();
}

} // namespace

Decisions::Decisions(JobState& job, JobControl& control, LinkReader& reader, Layout& layout,
                     const CopyIndex& copies)
    : m_job(job), m_control(control), m_reader(reader), m_layout(layout), m_copies(copies),
      m_keys(job.cloudFolder), m_threeWays(job, control, reader, copies), m_owners(m_keys)
{}

bool Decisions::Make(const Answers& answers)
{
    m_answers = answers;
    m_asideTargets.clear();
    m_layout.TakeTargets();
    for (JobFile& file : m_job.files) {
        file.isPending = false;
        if (file.mapping && !file.isFolder)
            file.End(Outcome::NotDone);
    }
    PlaceByRecords();
    if (!PlaceOtherwise() || !Look())
        return false;
    m_control.BeginPhase(Phase::ResolvingConflicts, 0);
    if (m_control.IsCancelRequested())
        return false;
    Settle();
    PlanLinks(m_job);
    NoteLinks();
    Orphans orphans(m_job, m_copies);
    m_job.orphans = orphans.Find();
    m_job.lostCopies = orphans.Lost();
    return true;
}

/// A folder on the way is none any more, or leads elsewhere.
bool Decisions::IsCutOff(const QString& target) const
{
    QString detail;
    return ObstacleOnTheWay(target, m_job.cloudFolder, detail) != Remark::None;
}

void Decisions::PlaceByRecords()
{
    for (JobFile& file : m_job.files) {
        if (!HasTarget(file) || file.keepsTarget || file.StaysInPlace())
            continue;
        const CopyRecord* record = m_copies.OfProject(file.source, m_job.target);
        if (!record || !ExistsOnDisk(record->target) || IsCutOff(record->target))
            continue;
        // A selected file has its place by its name: only another name beside it is remembered.
        if (!file.isSelected || QFileInfo(record->target).path() == QFileInfo(file.target).path())
            file.target = record->target;
    }
    for (auto it = m_asideTargets.begin(); it != m_asideTargets.end(); ++it)
        m_job.files.At(it.key()).target = it.value();
    if (!m_job.request.selfContained)
        ShareCopies();
}

/// A copy of another project that is as it was made, from a source that is as it was.
const CopyRecord* Decisions::CopyElsewhere(const JobFile& file) const
{
    if (!HasTarget(file) || file.isSelected || file.keepsTarget || file.StaysInPlace() ||
        m_copies.OfProject(file.source, m_job.target))
        return nullptr;
    for (const CopyRecord* record : m_copies.OfSource(file.source)) {
        const bool isSound = !IsCutOff(record->target) && !record->isRewritePending &&
                             record->linksState != LinksState::Failed &&
                             IsInFolder(record->target, m_job.cloudFolder) &&
                             !QFileInfo(record->target).isSymbolicLink();
        if (isSound &&
            IsSameAsRecorded(record->sourceStamp, record->recordedAt, file.source,
                             m_job.request.checksum, nullptr) &&
            IsSameAsRecorded(record->targetStamp, record->recordedAt, record->target,
                             m_job.request.checksum, nullptr))
            return record;
    }
    return nullptr;
}

/// A copy may be shared when all that it links is shared, too, just where it looks for it.
bool Decisions::MayShare(const JobFile& file,
                         const QHash<qsizetype, const CopyRecord*>& shared) const
{
    const CopyRecord& record = *shared.value(m_job.files.Find(file.source));
    return std::all_of(file.links.begin(), file.links.end(), [&](const JobLink& link) {
        // What this project has moved another one may have missed.
        if (link.member >= 0 && m_job.files.At(link.member).wasMoved)
            return record.linkedTargets.contains(m_job.files.At(link.member).target);
        if (link.member < 0 || !HasTarget(m_job.files.At(link.member)))
            return true;
        const CopyRecord* linked = shared.value(link.member);
        const QString place = linked ? linked->target : m_job.files.At(link.member).target;
        return record.linkedTargets.contains(place) &&
               (linked || m_job.files.At(link.member).StaysInPlace());
    });
}

void Decisions::ShareCopies()
{
    QHash<qsizetype, const CopyRecord*> shared;
    for (qsizetype place = 0; place < m_job.files.Size(); ++place)
        if (const CopyRecord* record = CopyElsewhere(m_job.files.At(place)))
            shared.insert(place, record);
    for (bool changed = true; changed;) {
        changed = false;
        for (qsizetype place = m_job.files.Size(); place-- > 0;)
            if (shared.contains(place) && !MayShare(m_job.files.At(place), shared)) {
                shared.remove(place);
                changed = true;
            }
    }
    for (auto it = shared.begin(); it != shared.end(); ++it)
        m_job.files.At(it.key()).target = it.value()->target;
}

/// Files that cannot be where the layout wants them.
QList<qsizetype> Decisions::FindStuck()
{
    WorkOutLinks(m_job);
    TargetOwners owners(m_keys);
    QList<qsizetype> stuck;
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        JobFile& file = m_job.files.At(place);
        if (!HasTarget(file) || file.target.isEmpty())
            continue;
        const bool isShared = !file.isSelected && owners.OtherOwner(file);
        owners.Add(file);
        if (isShared || (file.keepsTarget && IsStuck(file, m_threeWays.Of(file))))
            stuck.append(place);
    }
    return stuck;
}

/// True when a file and all that must stay beside it have copies of this project that stand
/// together, and nothing is in their way.
bool Decisions::StaysAside(const Groups& groups, qsizetype stuck)
{
    const QList<qsizetype> group = groups.Of(stuck);
    QHash<qsizetype, QString> targets;
    for (const qsizetype place : group) {
        JobFile file = m_job.files.At(place);
        const CopyRecord* record = m_copies.OfProject(file.source, m_job.target);
        if (!HasTarget(file) || file.isFolder || !record || !ExistsOnDisk(record->target) ||
            IsCutOff(record->target))
            return false;
        const bool isFixed = file.isSelected && record->target != file.target;
        file.target = record->target;
        if (isFixed || IsStuck(file, m_threeWays.Of(file)))
            return false;
        targets.insert(place, record->target);
    }
    if (!groups.StayTogether(group, targets))
        return false;
    m_asideTargets.insert(targets);
    return true;
}

/// A layout does not know what stands in the way when it is asked first.
bool Decisions::PlaceOtherwise()
{
    QList<qsizetype> stuck = FindStuck();
    if (stuck.isEmpty())
        return true;
    const Groups groups(m_job.files);
    for (qsizetype i = stuck.size(); i-- > 0;)
        if (m_asideTargets.contains(stuck.at(i)) || StaysAside(groups, stuck.at(i)))
            stuck.removeAt(i);
    if (stuck.isEmpty()) {
        PlaceByRecords();
        return true;
    }
    QStringList before;
    for (const JobFile& file : m_job.files)
        before.append(file.target);
    if (!m_layout.AssignOtherwise(stuck))
        return false;
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        JobFile& file = m_job.files.At(place);
        file.isAside = file.target != before.at(place) && ExistsOnDisk(before.at(place));
    }
    PlaceByRecords();
    return true;
}

bool Decisions::IsStuck(const JobFile& file, Standing standing) const
{
    return (standing == Standing::Foreign || standing == Standing::BothChanged) &&
           AnswerFor(file, standing) == ConflictAnswer::Rename;
}

bool Decisions::Look()
{
    WorkOutLinks(m_job);
    for (JobFile& file : m_job.files) {
        if (m_control.IsCancelRequested())
            return false;
        if (!HasTarget(file))
            continue;
        const Remark objection = ObjectionToTarget(file.target, m_job.cloudFolder);
        QString detail;
        const Remark obstacle = objection == Remark::None
                                    ? ObstacleOnTheWay(file.target, m_job.cloudFolder, detail)
                                    : objection;
        if (obstacle != Remark::None) {
            file.End(Outcome::Failed, obstacle, detail);
            continue;
        }
        if (!file.isSelected && IsSameFile(file.source, file.target)) {
            TakeInPlace(file);
            continue;
        }
        if (m_job.request.linksOnly && file.isSelected) {
            file.End(Outcome::Skipped, Remark::OnlyLinksWanted);
            continue;
        }
        if (!IsReadable(file))
            continue;
        const Standing standing = m_threeWays.Of(file);
        m_standings.insert(&file, standing);
        Decide(file, standing);
    }
    return true;
}

/// A copy of an earlier import that nobody changed may get other links; nothing else in the cloud
/// folder is touched.
void Decisions::TakeInPlace(JobFile& file) const
{
    file.End(Outcome::InPlace);
    const CopyRecord* record = m_copies.OfTarget(file.target);
    if (record && IsSameAsRecorded(record->targetStamp, record->recordedAt, file.target,
                                   m_job.request.checksum, nullptr)) {
        file.record = *record;
        file.targetStatus = Base::ReadLinkStatus(Native(file.target));
    }
}

bool Decisions::IsOfThisProject(const CopyRecord& record) const
{
    return PathKey(record.project) == PathKey(m_job.target);
}

void Decisions::Decide(JobFile& file, Standing standing)
{
    const auto copy = [&](Outcome outcome) {
        file.deed = Deed::Copy;
        file.outcome = outcome;
        file.remark = Remark::None;
    };
    switch (standing) {
    case Standing::Free:
        copy(file.isAside                            ? Outcome::Renamed
             : m_job.request.move && file.isSelected ? Outcome::Moved
                                                     : Outcome::Copied);
        return;
    case Standing::Ours:
    case Standing::SameContent:
        // What another project has brought is not this one's to renew.
        if (m_job.request.force && !HasBetterLinks(file) &&
            (!file.record || IsOfThisProject(*file.record)))
            copy(Outcome::Updated);
        else
            file.End(Outcome::Unchanged);
        return;
    case Standing::SourceChanged:
        if (HasBetterLinks(file)) {
            file.End(Outcome::Failed);
            file.NoteUnreadLinks();
        } else {
            copy(Outcome::Updated);
        }
        return;
    case Standing::CopyChanged:
        file.End(Outcome::Left);
        return;
    case Standing::Folder:
    case Standing::BothChanged:
    case Standing::Foreign:
        DecideTaken(file, standing);
        return;
    }
}

void Decisions::DecideTaken(JobFile& file, Standing standing)
{
    file.deed = Deed::Copy;
    file.outcome = Outcome::Replaced;
    file.remark = Remark::None;
    if (standing == Standing::Folder)
        return;
    switch (AnswerFor(file, standing)) {
    case ConflictAnswer::Keep:
        file.End(Outcome::Kept);
        return;
    case ConflictAnswer::Rename:
        file.outcome = Outcome::Renamed;
        return;
    case ConflictAnswer::Stop:
    case ConflictAnswer::Replace:
        return;
    }
}

ConflictAnswer Decisions::CollisionAnswerFor(const JobFile& file) const
{
    const ConflictAnswer policy = AnswerOf(file.isSelected ? m_job.request.selectedCollisions
                                                           : m_job.request.linkedCollisions);
    return m_answers.value(file.source, policy);
}

ConflictAnswer Decisions::AnswerFor(const JobFile& file, Standing standing) const
{
    return standing == Standing::BothChanged
               ? m_answers.value(file.source, m_job.request.onConflict)
               : CollisionAnswerFor(file);
}

void Decisions::Settle()
{
    // What is in place, or about to be made for the files in it, comes before what is copied.
    for (JobFile& file : m_job.files)
        if (IsWanted(file) && !file.target.isEmpty() && file.isFolder)
            m_owners.Add(file);
    for (JobFile& file : m_job.files)
        if (!file.isFolder && file.deed == Deed::Nothing && HasPlace(file) &&
            file.outcome != Outcome::NotDone)
            m_owners.Add(file);
    for (JobFile& file : m_job.files) {
        if (file.isFolder && IsWanted(file))
            SettleInPlace(file);
        else if (file.deed == Deed::Copy)
            SettleCopy(file);
    }
}

void Decisions::SettleInPlace(JobFile& file)
{
    const bool isNeeded = !m_job.request.linksOnly;
    if (isNeeded && ExistsOnDisk(file.target) && !IsFolder(file.target))
        Clash(file, ConflictKind::FileInTheWay);
}

void Decisions::SettleCopy(JobFile& file)
{
    const Standing standing = m_standings.value(&file, Standing::Free);
    const JobFile* owner = m_owners.OtherOwner(file);
    const bool mayRename = !file.keepsTarget;
    const bool isTwin = owner && !owner->isFolder && owner->target != file.target;
    if (owner) {
        if (mayRename && (isTwin || CollisionAnswerFor(file) == ConflictAnswer::Rename) &&
            GiveFreeName(file))
            return;
        Clash(file, ConflictKind::SameTarget, owner);
        return;
    }
    if (standing == Standing::Folder) {
        Clash(file, ConflictKind::FolderInTheWay);
    } else if (file.outcome == Outcome::Renamed && standing != Standing::Free) {
        if (!mayRename || !GiveFreeName(file))
            Clash(file, ConflictKind::CannotRename);
        return;
    } else if (standing == Standing::SourceChanged && mayRename &&
               m_copies.IsLinkedElsewhere(file.target, m_job.target)) {
        if (GiveFreeName(file))
            file.remark = Remark::SharedCopyStays;
        else
            file.End(Outcome::Failed, Remark::NameRefused);
        return;
    } else if (file.outcome == Outcome::Replaced &&
               AnswerFor(file, standing) == ConflictAnswer::Stop) {
        Clash(file, standing == Standing::BothChanged ? ConflictKind::BothChanged
                                                      : ConflictKind::TargetTaken);
    } else if (file.outcome == Outcome::Replaced &&
               file.targetStatus.kind == Base::FileKind::Link) {
        file.remark = Remark::LinkSetAside;
        file.detail = FreeName(file.target + QStringLiteral(".link"));
    }
    m_owners.Add(file);
}

/// The path itself when nothing is there or will be.
QString Decisions::FreeName(const QString& path) const
{
    const auto isTaken = [&](const QString& candidate) {
        return m_owners.IsOwned(candidate) || ExistsOnDisk(candidate);
    };
    return isTaken(path) ? FreePath(path, isTaken) : path;
}

bool Decisions::GiveFreeName(JobFile& file)
{
    const QString wanted = file.target;
    file.target = FreePath(
        wanted, [&](const QString& path) { return m_owners.IsOwned(path) || ExistsOnDisk(path); });
    if (ObjectionToTarget(file.target, m_job.cloudFolder) != Remark::None) {
        file.target = wanted;
        return false;
    }
    file.record.reset();
    file.outcome = Outcome::Renamed;
    m_owners.Add(file);
    return true;
}

/// Nothing is put into a folder that cannot be written to, and no read-only file is replaced.
QList<ConflictAnswer> Decisions::AnswersTo(const JobFile& file, ConflictKind kind) const
{
    const bool mayAdd = Base::MayAddTo(Native(QFileInfo(file.target).path()));
    const bool mayReplace = mayAdd && (file.targetStatus.kind == Base::FileKind::Link ||
                                       Base::IsWritable(Native(file.target)));
    QList<ConflictAnswer> answers;
    switch (kind) {
    case ConflictKind::TargetTaken:
    case ConflictKind::BothChanged:
    case ConflictKind::CannotRename:
        answers.append(ConflictAnswer::Keep);
        if (mayReplace)
            answers.append(ConflictAnswer::Replace);
        if (mayAdd && kind != ConflictKind::CannotRename)
            answers.append(ConflictAnswer::Rename);
        return answers;
    case ConflictKind::SameTarget:
        if (!file.keepsTarget && CollisionAnswerFor(file) != ConflictAnswer::Rename)
            answers.append(ConflictAnswer::Rename);
        return answers;
    case ConflictKind::FolderInTheWay:
    case ConflictKind::FileInTheWay:
        return answers;
    }
    return answers;
}

void Decisions::Clash(const JobFile& file, ConflictKind kind, const JobFile* other)
{
    Conflict conflict;
    conflict.kind = kind;
    conflict.source = file.source;
    conflict.target = file.target;
    conflict.other = other ? other->source : QString();
    conflict.selected = file.isSelected;
    conflict.answers = AnswersTo(file, kind);
    if (kind == ConflictKind::TargetTaken || kind == ConflictKind::BothChanged) {
        conflict.sourceSide =
            SideOf(file.source, file.record ? &file.record->sourceStamp : nullptr);
        conflict.targetSide =
            SideOf(file.target, file.record ? &file.record->targetStamp : nullptr);
    }
    m_conflicts.append(conflict);
}

/// What is to be said of the links of files that come along all the same.
void Decisions::NoteLinks()
{
    const auto leadsToNoFile = [&](const JobLink& link) {
        if (link.member < 0)
            return false;
        const JobFile& linked = m_job.files.At(link.member);
        return linked.outcome == Outcome::Skipped &&
               (linked.remark == Remark::LinkedFolder || linked.remark == Remark::NoFile);
    };
    for (JobFile& file : m_job.files) {
        if (file.isFolder || file.isDropped || !MayBeRemarked(file))
            continue;
        const auto link = std::find_if(file.links.begin(), file.links.end(), leadsToNoFile);
        if (file.linksState == LinksState::Failed) {
            file.NoteUnreadLinks();
        } else if (link != file.links.end() && file.remark == Remark::None) {
            file.remark = Remark::LinksNoFile;
            file.detail = link->file;
        }
    }
}

} // namespace Halvern::Jobs
