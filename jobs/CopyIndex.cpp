// SPDX-License-Identifier: Apache-2.0

#include "CopyIndex.h"

#include "Paths.h"

#include <algorithm>

namespace Halvern::Jobs {

CopyIndex::CopyIndex(QList<CopyRecord> records) : m_records(std::move(records))
{
    std::stable_sort(
        m_records.begin(), m_records.end(),
        [](const CopyRecord& a, const CopyRecord& b) { return a.recordedAt > b.recordedAt; });
    for (qsizetype i = 0; i < m_records.size(); ++i) {
        const CopyRecord& record = m_records.at(i);
        m_bySource[PathKey(record.source)].append(i);
        m_byTarget.insert(PathKey(record.target), i);
        for (const QString& linked : record.linkedTargets)
            m_byLinkedTarget.insert(PathKey(linked), i);
    }
}

QList<const CopyRecord*> CopyIndex::OfSource(const QString& source) const
{
    QList<const CopyRecord*> records;
    for (const qsizetype place : m_bySource.value(PathKey(source)))
        records.append(&m_records.at(place));
    return records;
}

const CopyRecord* CopyIndex::OfProject(const QString& source, const QString& project) const
{
    for (const CopyRecord* record : OfSource(source))
        if (PathKey(record->project) == PathKey(project))
            return record;
    return nullptr;
}

bool CopyIndex::WasMoved(const QString& source, const QString& project) const
{
    const CopyRecord* record = OfProject(source, project);
    return record && record->isMoved;
}

const CopyRecord* CopyIndex::OfTarget(const QString& target) const
{
    const qsizetype place = m_byTarget.value(PathKey(target), -1);
    return place < 0 ? nullptr : &m_records.at(place);
}

bool CopyIndex::IsLinkedElsewhere(const QString& target, const QString& project) const
{
    const auto [first, last] = m_byLinkedTarget.equal_range(PathKey(target));
    return std::any_of(first, last, [&](qsizetype place) {
        const CopyRecord& holder = m_records.at(place);
        return PathKey(holder.project) != PathKey(project) && ExistsOnDisk(holder.target);
    });
}

} // namespace Halvern::Jobs
