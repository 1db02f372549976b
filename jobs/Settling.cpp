// SPDX-License-Identifier: Apache-2.0

#include "Settling.h"

#include "LinkPlanning.h"
#include "Paths.h"

#include "base/FileAttributes.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Jobs {

namespace {

bool IsWanted(const JobFile& file)
{
    return file.HasTarget() || (file.isFolder && !file.isDropped);
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

} // namespace

void Settling::Settle()
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
            SettleFolder(file);
        else if (file.deed == Deed::Copy)
            SettleCopy(file);
    }
}

void Settling::SettleFolder(JobFile& file)
{
    const bool isNeeded = !m_job.request.linksOnly;
    if (isNeeded && ExistsOnDisk(file.target) && !IsFolder(file.target))
        Clash(file, ConflictKind::FileInTheWay);
}

void Settling::SettleCopy(JobFile& file)
{
    const Standing standing = m_standings.value(&file, Standing::Free);
    const JobFile* owner = m_owners.OtherOwner(file);
    const bool mayRename = !file.keepsTarget;
    const bool isTwin = owner && !owner->isFolder && owner->target != file.target;
    if (owner) {
        if (mayRename && (isTwin || m_answers.ForCollision(file) == ConflictAnswer::Rename) &&
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
               m_answers.For(file, standing) == ConflictAnswer::Stop) {
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
QString Settling::FreeName(const QString& path) const
{
    const auto isTaken = [&](const QString& candidate) {
        return m_owners.IsOwned(candidate) || ExistsOnDisk(candidate);
    };
    return isTaken(path) ? FreePath(path, isTaken) : path;
}

bool Settling::GiveFreeName(JobFile& file)
{
    const QString wanted = file.target;
    int& number = m_numbers[wanted];
    number = std::max(number, 2);
    file.target = FreePath(wanted, number, [&](const QString& path) {
        return m_owners.IsOwned(path) || ExistsOnDisk(path);
    });
    if (ObjectionToTarget(file.target, m_job.cloudFolder) != Remark::None) {
        file.target = wanted;
        return false;
    }
    file.record.reset();
    file.outcome = Outcome::Renamed;
    m_owners.Add(file);
    return true;
}

/// Nothing is put into a folder that cannot be written to, and no read-only file is replaced, nor a
/// copy by one whose links nobody can rewrite.
QList<ConflictAnswer> Settling::AnswersTo(const JobFile& file, ConflictKind kind) const
{
    const bool mayAdd = Base::MayAddTo(Native(QFileInfo(file.target).path()));
    const bool mayReplace =
        mayAdd && !file.LosesLinks() &&
        (file.targetStatus.kind == Base::FileKind::Link || Base::IsWritable(Native(file.target)));
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
        if (!file.keepsTarget && m_answers.ForCollision(file) != ConflictAnswer::Rename)
            answers.append(ConflictAnswer::Rename);
        return answers;
    case ConflictKind::FolderInTheWay:
    case ConflictKind::FileInTheWay:
        return answers;
    }
    return answers;
}

void Settling::Clash(const JobFile& file, ConflictKind kind, const JobFile* other)
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

} // namespace Halvern::Jobs
