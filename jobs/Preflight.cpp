// SPDX-License-Identifier: Apache-2.0

#include "Preflight.h"

#include "Paths.h"

#include "base/FileAttributes.h"
#include "base/Space.h"
#include "syncservices/BaseStore.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <algorithm>

namespace Halvern::Jobs {

using SyncServices::SyncManager;

namespace {

/// Bytes that come and go on the disks of the cloud folder and of the base store, file by file.
class Room
{
public:
    /// The store takes `free` bytes more; then its oldest copies go for each new one.
    explicit Room(qint64 free) : m_free(free) {}

    /// A file is made, and takes the place of an old one, which is put aside before.
    void Add(qint64 newBytes, qint64 oldBytes)
    {
        m_cloudPeak = std::max(m_cloudPeak, m_cloud + newBytes);
        m_storePeak = std::max(m_storePeak, m_store + oldBytes);
        m_peak = std::max(m_peak, m_cloud + newBytes + m_store + oldBytes);
        m_cloud += newBytes - oldBytes;
        m_store = std::max(m_store, std::min(m_store + oldBytes, m_free));
    }
    qint64 OfCloud() const { return m_cloudPeak; }
    qint64 OfStore() const { return m_storePeak; }
    /// Where both are on one disk.
    qint64 OfBoth() const { return m_peak; }

private:
    const qint64 m_free;
    qint64 m_cloud = 0;
    qint64 m_store = 0;
    qint64 m_cloudPeak = 0;
    qint64 m_storePeak = 0;
    qint64 m_peak = 0;
};

/// What the copies need.
struct Needs
{
    qint64 files = 0;
    /// Of what is put aside.
    qint64 oldFiles = 0;
    qint64 oldBytes = 0;
    /// Those to write to.
    QSet<QString> folders;
};

QString ExistingAbove(QString folder)
{
    while (!folder.isEmpty() && !QFileInfo::exists(folder)) {
        const QString above = QFileInfo(folder).path();
        if (above == folder)
            break;
        folder = above;
    }
    return folder;
}

/// A link that is replaced is set aside beside its place.
bool IsKeptInStore(const JobFile& file)
{
    return file.targetStatus.kind == Base::FileKind::File && file.outcome != Outcome::Renamed;
}

Needs NeedsOf(const JobState& job)
{
    Needs needs;
    QSet<QString> newFolders;
    const auto addFolder = [&](const QString& folder) {
        if (needs.folders.contains(folder))
            return;
        needs.folders.insert(folder);
        for (QString missing = folder; !QFileInfo::exists(missing) && !newFolders.contains(missing);
             missing = QFileInfo(missing).path())
            newFolders.insert(missing);
    };
    for (const JobFile& file : job.files) {
        if (file.isFolder && !file.isDropped && !job.request.linksOnly &&
            !QFileInfo::exists(file.target))
            addFolder(file.target);
        if (file.isFolder || file.deed == Deed::Nothing)
            continue;
        const bool replaces = file.targetStatus.Exists() && file.outcome != Outcome::Renamed;
        needs.files += replaces ? 0 : 1;
        needs.oldFiles += IsKeptInStore(file) ? 1 : 0;
        needs.oldBytes += IsKeptInStore(file) ? qint64(file.targetStatus.size) : 0;
        addFolder(QFileInfo(file.target).path());
        // Copies are made ready there.
        needs.folders.insert(job.cloudFolder);
    }
    needs.files += newFolders.size();
    return needs;
}

/// Only large files have holes that matter.
qint64 BytesOfCopy(const JobFile& file)
{
    constexpr qint64 Large = qint64(16) << 20;
    const qint64 size = qint64(file.status.size);
    return size < Large ? size : std::min(size, qint64(Base::BytesOfCopy(Native(file.source))));
}

Room RoomFor(const JobState& job, const SyncServices::BaseStoreStatus& store)
{
    Room room(std::max<qint64>(0, store.limit - store.used));
    for (const Deed deed : {Deed::Copy, Deed::Relink})
        for (const JobFile& file : job.files)
            if (!file.isFolder && file.deed == deed)
                room.Add(deed == Deed::Copy ? BytesOfCopy(file) : qint64(file.targetStatus.size),
                         IsKeptInStore(file) ? qint64(file.targetStatus.size) : 0);
    return room;
}

void FindLackOfBytes(const QString& folder, const Base::Space& space, qint64 needed,
                     QList<Finding>& findings)
{
    if (space.freeBytes && needed > qint64(*space.freeBytes))
        findings.append({FindingKind::NoSpace, folder, needed, qint64(*space.freeBytes)});
}

/// What is replaced needs room where it is kept, which may be another disk.
void FindLackOfSpace(const JobState& job, const Needs& needs,
                     const SyncServices::BaseStoreStatus& store, QList<Finding>& findings)
{
    Base::Space cloud, kept;
    const bool cloudKnown = bool(Base::ReadSpace(Native(ExistingAbove(job.cloudFolder)), cloud));
    const bool keptKnown = needs.oldFiles > 0 && !store.folder.isEmpty() &&
                           Base::ReadSpace(Native(ExistingAbove(store.folder)), kept);
    const Room room = RoomFor(job, store);
    const bool isOneDisk = cloudKnown && keptKnown && cloud.device == kept.device;
    if (cloudKnown)
        FindLackOfBytes(job.cloudFolder, cloud, isOneDisk ? room.OfBoth() : room.OfCloud(),
                        findings);
    if (keptKnown && !isOneDisk)
        FindLackOfBytes(store.folder, kept, room.OfStore(), findings);
    if (cloudKnown && cloud.freeFiles && needs.files > qint64(*cloud.freeFiles))
        findings.append(
            {FindingKind::NoFiles, job.cloudFolder, needs.files, qint64(*cloud.freeFiles)});
}

void FindUnwritableFolders(const Needs& needs, QList<Finding>& findings)
{
    QSet<QString> seen;
    QStringList folders = needs.folders.values();
    folders.sort();
    for (const QString& folder : std::as_const(folders)) {
        const QString existing = ExistingAbove(folder);
        if (seen.contains(existing))
            continue;
        seen.insert(existing);
        if (QFileInfo(existing).isDir() && !Base::MayAddTo(Native(existing)))
            findings.append({FindingKind::FolderNotWritable, existing, 0, 0});
    }
}

void FindLackOfBaseStore(const Needs& needs, const SyncServices::BaseStoreStatus& store,
                         QList<Finding>& findings)
{
    if (needs.oldFiles == 0)
        return;
    if (!store.problem.isEmpty())
        findings.append({FindingKind::BaseStoreBroken, store.folder, 0, 0});
    else if (needs.oldBytes > store.available)
        findings.append(
            {FindingKind::BaseStoreTooSmall, store.folder, needs.oldBytes, store.available});
}

} // namespace

QList<Finding> LookAhead(const JobState& job)
{
    QList<Finding> findings;
    const Needs needs = NeedsOf(job);
    if (needs.folders.isEmpty())
        return findings;
    const SyncServices::BaseStoreStatus store =
        needs.oldFiles > 0 ? SyncManager::GetInstance()->GetBaseStoreStatus()
                           : SyncServices::BaseStoreStatus();
    FindLackOfSpace(job, needs, store, findings);
    FindUnwritableFolders(needs, findings);
    FindLackOfBaseStore(needs, store, findings);
    return findings;
}

} // namespace Halvern::Jobs
