// SPDX-License-Identifier: Apache-2.0

#include "Pruning.h"

#include "FileStamps.h"
#include "Paths.h"

#include "syncservices/SyncManager.h"

#include <utility>

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

QList<Pruning::Kept> Pruning::KeepAll(const Base::RootedFolder& cloud)
{
    QList<Kept> all;
    for (const Orphan& orphan : std::as_const(m_job.orphans)) {
        Kept kept{orphan.record, {}, {}};
        QString reason;
        if (!cloud.Status(BelowCloudFolder(kept.record.target, m_job), kept.status) ||
            !MayGo(orphan, kept.status))
            continue;
        if (SyncManager::GetInstance()->KeepVersion(kept.record.target, &kept.version, &reason))
            all.append(kept);
        else
            m_job.notPruned.insert(kept.record.target, reason);
    }
    return all;
}

void Pruning::Prune(const Base::RootedFolder& cloud, DiskFlush& flush, Records& records)
{
    const QList<Kept> all = KeepAll(cloud);
    QList<std::pair<CopyRecord, QString>> announced;
    for (const Kept& kept : all) {
        flush.AddOutside(kept.version);
        announced.append({kept.record, kept.version});
    }
    const Base::FileResult flushed = flush.Run();
    const bool mayGo = flushed && records.AnnouncePruned(announced);
    for (qsizetype place = 0; place < all.size(); ++place) {
        const Kept& kept = all.at(place);
        if (!mayGo) {
            m_job.notPruned.insert(kept.record.target,
                                   flushed ? QStringLiteral("it could not be recorded")
                                           : QString::fromStdString(flushed.Text()));
        } else if (TakeOut(cloud, kept)) {
            m_job.pruned.append(kept.record.target);
            records.NotePruned(place);
        }
    }
    static_cast<void>(records.Forget(m_job.pruned));
}

bool Pruning::TakeOut(const Base::RootedFolder& cloud, const Kept& kept)
{
    const std::filesystem::path copy = BelowCloudFolder(kept.record.target, m_job);
    const auto stays = [&](const QString& why) {
        m_job.notPruned.insert(kept.record.target, why);
        return false;
    };
    Base::FileStatus now;
    if (!cloud.Status(copy, now) || now != kept.status)
        return stays(QStringLiteral("it changed while it was kept"));
    const Base::FileResult removed = cloud.Remove(copy);
    return removed || stays(QString::fromStdString(removed.Text()));
}

} // namespace Halvern::Jobs
