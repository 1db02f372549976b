// SPDX-License-Identifier: Apache-2.0

#include "SharedCopies.h"

#include "FileStamps.h"
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

void SharedCopies::Use()
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

} // namespace Halvern::Jobs
