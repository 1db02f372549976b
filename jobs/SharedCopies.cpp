// SPDX-License-Identifier: Apache-2.0

#include "SharedCopies.h"

#include "FileStamps.h"
#include "LinkPlanning.h"
#include "Paths.h"
#include "Targets.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Jobs {

/// A copy of another project that is as it was made, from a source that is as it was.
const CopyRecord* SharedCopies::CopyElsewhere(const JobFile& file) const
{
    if (!file.HasTarget() || file.isSelected || file.keepsTarget || file.StaysInPlace() ||
        m_copies.OfProject(file.source, m_job.target))
        return nullptr;
    for (const CopyRecord* record : m_copies.OfSource(file.source)) {
        const bool isSound = !IsCutOff(record->target, m_job.cloudFolder) &&
                             !record->isRewritePending &&
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
bool SharedCopies::MayShare(const JobFile& file,
                            const QHash<qsizetype, const CopyRecord*>& shared) const
{
    const CopyRecord& record = *shared.value(m_job.files.Find(file.source));
    return std::all_of(file.links.begin(), file.links.end(), [&](const JobLink& link) {
        // What this project has moved another one may have missed.
        if (link.member >= 0 && m_job.files.At(link.member).wasMoved)
            return record.linkedTargets.contains(m_job.files.At(link.member).target);
        if (link.member < 0 || !m_job.files.At(link.member).HasTarget())
            return true;
        const CopyRecord* linked = shared.value(link.member);
        const QString place = linked ? linked->target : m_job.files.At(link.member).target;
        return record.linkedTargets.contains(place) &&
               (linked || m_job.files.At(link.member).StaysInPlace());
    });
}

/// A link to it is no longer than a link may be, where one to a copy of this project would not be.
bool SharedCopies::MayBeLinked(qsizetype place,
                               const QHash<qsizetype, const CopyRecord*>& shared) const
{
    const QList<qsizetype> holders = m_holders.value(place);
    return std::all_of(holders.begin(), holders.end(), [&](qsizetype holder) {
        const JobFile& file = m_job.files.At(holder);
        return shared.contains(holder) || !file.HasTarget() ||
               !IsLinkTooLong(WayFrom(file.target, shared.value(place)->target)) ||
               IsLinkTooLong(WayFrom(file.target, m_job.files.At(place).target));
    });
}

void SharedCopies::Use()
{
    for (qsizetype holder = 0; holder < m_job.files.Size(); ++holder)
        for (const JobLink& link : m_job.files.At(holder).links)
            if (link.member >= 0)
                m_holders[link.member].append(holder);
    QHash<qsizetype, const CopyRecord*> shared;
    for (qsizetype place = 0; place < m_job.files.Size(); ++place)
        if (const CopyRecord* record = CopyElsewhere(m_job.files.At(place)))
            shared.insert(place, record);
    for (bool changed = true; changed;) {
        changed = false;
        for (qsizetype place = m_job.files.Size(); place-- > 0;)
            if (shared.contains(place) &&
                (!MayShare(m_job.files.At(place), shared) || !MayBeLinked(place, shared))) {
                shared.remove(place);
                changed = true;
            }
    }
    for (auto it = shared.begin(); it != shared.end(); ++it)
        m_job.files.At(it.key()).target = it.value()->target;
}

} // namespace Halvern::Jobs
