// SPDX-License-Identifier: Apache-2.0

#include "Pruning.h"

#include "FileStamps.h"
#include "Paths.h"

#include "syncservices/SyncManager.h"

namespace Halvern::Jobs {

using SyncServices::SyncManager;

bool Pruning::MayGo(const Orphan& orphan, const Base::FileStatus& status)
{
    const CopyRecord& record = orphan.record;
    if (orphan.isStillLinked || !status.Exists())
        return false;
    if (status.kind == Base::FileKind::File &&
        IsSameAsRecorded(record.targetStamp, record.recordedAt, record.target,
                         m_job.request.checksum))
        return true;
    // Why nothing went wrong is told without a reason.
    m_job.notPruned.insert(record.target, QString());
    return false;
}

void Pruning::Foresee()
{
    m_job.pruned.clear();
    m_job.notPruned.clear();
    for (const Orphan& orphan : std::as_const(m_job.orphans))
        if (MayGo(orphan, Base::ReadLinkStatus(Native(orphan.record.target))))
            m_job.pruned.append(orphan.record.target);
}

void Pruning::Prune(const Base::RootedFolder& cloud)
{
    for (const Orphan& orphan : std::as_const(m_job.orphans)) {
        Base::FileStatus status;
        if (cloud.Status(BelowCloudFolder(orphan.record.target, m_job), status) &&
            MayGo(orphan, status) && PutAway(cloud, orphan.record, status))
            m_job.pruned.append(orphan.record.target);
    }
}

bool Pruning::PutAway(const Base::RootedFolder& cloud, const CopyRecord& orphan,
                      const Base::FileStatus& status)
{
    const std::filesystem::path copy = BelowCloudFolder(orphan.target, m_job);
    const auto keep = [&](const QString& why) {
        m_job.notPruned.insert(orphan.target, why);
        return false;
    };
    QString reason;
    if (!SyncManager::GetInstance()->SaveVersion(orphan.target, &reason))
        return keep(reason);
    Base::FileStatus now;
    if (!cloud.Status(copy, now) || now != status)
        return keep(QStringLiteral("it changed while it was kept"));
    const Base::FileResult removed = cloud.Remove(copy);
    return removed || keep(QString::fromStdString(removed.Text()));
}

} // namespace Halvern::Jobs
