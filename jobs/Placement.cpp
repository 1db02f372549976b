// SPDX-License-Identifier: Apache-2.0

#include "Placement.h"

#include "LinkPlanning.h"
#include "Paths.h"
#include "SharedCopies.h"

#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

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

/// True when a file and all that must stay beside it have copies of this project that stand
/// together, and nothing is in their way.
bool Placement::StaysAside(const Groups& groups, qsizetype stuck)
{
    const QList<qsizetype> group = groups.Of(stuck);
    QHash<qsizetype, QString> targets;
    for (const qsizetype place : group) {
        JobFile file = m_job.files.At(place);
        const CopyRecord* record = m_copies.OfProject(file.source, m_job.target);
        if (!file.HasTarget() || file.isFolder || !record || !ExistsOnDisk(record->target) ||
            IsCutOff(record->target, m_job.cloudFolder))
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
