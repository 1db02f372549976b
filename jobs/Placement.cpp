// SPDX-License-Identifier: Apache-2.0

#include "Placement.h"

#include "LinkPlanning.h"
#include "Paths.h"
#include "SharedCopies.h"

#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

#include <algorithm>
#include <optional>
#include <utility>

namespace Halvern::Jobs {

namespace {

/// What a layout has put between a folder and what is below it: "/c/" became "/c/board (2)/".
struct FolderBetween
{
    QString above;
    QString below;
};

/// Nothing when the second path is not the first one with a folder more.
std::optional<FolderBetween> FindFolderBetween(const QString& wanted, const QString& found)
{
    const QStringList names = wanted.split(u'/');
    QStringList other = found.split(u'/');
    if (other.size() != names.size() + 1)
        return {};
    const auto end = std::mismatch(names.begin(), names.end() - 1, other.cbegin()).first;
    const qsizetype place = end - names.begin();
    const QString between = other.takeAt(place);
    if (other != names)
        return {};
    const QString above = names.first(place).join(u'/') + u'/';
    return FolderBetween{above, above + between + u'/'};
}

} // namespace

bool Placement::Find()
{
    m_asideTargets.clear();
    ByRecords();
    return Otherwise();
}

void Placement::ByRecords()
{
    for (JobFile& file : m_job.files) {
        if (!file.HasTarget() || file.keepsTarget || file.StaysInPlace())
            continue;
        const CopyRecord* record = m_copies.OfProject(file.source, m_job.target);
        if (!record || !ExistsOnDisk(record->target) || IsCutOff(record->target, m_job.cloudFolder))
            continue;
        // A selected file has its place by its name: only another name beside it is remembered.
        if (!file.isSelected || QFileInfo(record->target).path() == QFileInfo(file.target).path())
            file.target = record->target;
    }
    for (auto it = m_asideTargets.begin(); it != m_asideTargets.end(); ++it)
        m_job.files.At(it.key()).target = it.value();
    if (!m_job.request.selfContained)
        SharedCopies(m_job, m_copies).Use();
}

/// Files that cannot be where the layout wants them.
QList<qsizetype> Placement::FindStuck()
{
    WorkOutLinks(m_job);
    TargetOwners owners(m_keys);
    QList<qsizetype> stuck;
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        JobFile& file = m_job.files.At(place);
        if (!file.HasTarget() || file.target.isEmpty())
            continue;
        const bool isShared = !file.isSelected && owners.OtherOwner(file);
        owners.Add(file);
        if (isShared || (file.keepsTarget && IsStuck(file, m_threeWays.Of(file))))
            stuck.append(place);
    }
    return stuck;
}

const CopyRecord* Placement::StandingCopyOf(const JobFile& file) const
{
    const CopyRecord* record = m_copies.OfProject(file.source, m_job.target);
    return record && ExistsOnDisk(record->target) && !IsCutOff(record->target, m_job.cloudFolder)
               ? record
               : nullptr;
}

/// Where the earlier import that put files of the group into a folder of their own would put this
/// one, which was none of them.
QString Placement::PlaceBesideOthers(const JobFile& file, const QList<qsizetype>& group) const
{
    for (const qsizetype place : group) {
        const JobFile& other = m_job.files.At(place);
        const CopyRecord* record = StandingCopyOf(other);
        const std::optional<FolderBetween> between =
            record ? FindFolderBetween(other.target, record->target) : std::nullopt;
        if (between && file.target.startsWith(between->above))
            return between->below + file.target.mid(between->above.size());
    }
    return {};
}

/// Where an earlier import has put a file of a group, or would have; empty when that is not known.
QString Placement::AsideTargetOf(const JobFile& file, const QList<qsizetype>& group) const
{
    const CopyRecord* record = StandingCopyOf(file);
    if (!record)
        return PlaceBesideOthers(file, group);
    const bool isMovedOn = file.isSelected && record->target != file.target &&
                           !FindFolderBetween(file.target, record->target);
    return isMovedOn ? QString() : record->target;
}

/// True when a file and all that must stay beside it have copies of this project that stand
/// together, and nothing is in their way.
bool Placement::StaysAside(const Groups& groups, qsizetype stuck)
{
    QList<qsizetype> group = groups.Of(stuck);
    group.removeIf([&](qsizetype place) { return !m_job.files.At(place).HasTarget(); });
    QHash<qsizetype, QString> targets;
    for (const qsizetype place : std::as_const(group)) {
        JobFile file = m_job.files.At(place);
        file.target = AsideTargetOf(file, group);
        if (file.target.isEmpty() || IsStuck(file, m_threeWays.Of(file)))
            return false;
        targets.insert(place, file.target);
    }
    if (!groups.StayTogether(group, targets))
        return false;
    m_asideTargets.insert(targets);
    return true;
}

/// A layout does not know what stands in the way when it is asked first.
bool Placement::Otherwise()
{
    QList<qsizetype> stuck = FindStuck();
    if (stuck.isEmpty())
        return true;
    const Groups groups(m_job.files);
    for (qsizetype i = stuck.size(); i-- > 0;)
        if (m_asideTargets.contains(stuck.at(i)) || StaysAside(groups, stuck.at(i)))
            stuck.removeAt(i);
    if (stuck.isEmpty()) {
        ByRecords();
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
    ByRecords();
    return true;
}

bool Placement::IsStuck(const JobFile& file, Standing standing) const
{
    return (standing == Standing::Foreign || standing == Standing::BothChanged) &&
           m_answers.For(file, standing) == ConflictAnswer::Rename;
}

} // namespace Halvern::Jobs
