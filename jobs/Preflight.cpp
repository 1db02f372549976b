// SPDX-License-Identifier: Apache-2.0

#include "Preflight.h"

#include "Paths.h"

#include "base/Space.h"
#include "syncservices/BaseStore.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSet>

namespace Halvern::Jobs {

using SyncServices::SyncManager;

namespace {

/// What the copies need.
struct Needs
{
    qint64 bytes = 0;
    qint64 files = 0;
    /// Of what is put aside.
    qint64 oldFiles = 0;
    qint64 oldBytes = 0;
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

Needs NeedsOf(const JobState& job)
{
    Needs needs;
    QSet<QString> newFolders;
    for (const JobFile& file : job.files) {
        if (file.isFolder || file.deed == Deed::Nothing)
            continue;
        const bool replaces = file.targetStatus.Exists() && file.outcome != Outcome::Renamed;
        needs.bytes += qint64(file.status.size);
        needs.files += replaces ? 0 : 1;
        needs.oldFiles += replaces ? 1 : 0;
        needs.oldBytes += replaces ? qint64(file.targetStatus.size) : 0;
        const QString folder = QFileInfo(file.target).path();
        if (needs.folders.contains(folder))
            continue;
        needs.folders.insert(folder);
        for (QString missing = folder; !QFileInfo::exists(missing) && !newFolders.contains(missing);
             missing = QFileInfo(missing).path())
            newFolders.insert(missing);
    }
    needs.files += newFolders.size();
    return needs;
}

void FindLackOfSpace(const JobState& job, const Needs& needs, QList<Finding>& findings)
{
    const QString folder = ExistingAbove(job.cloudFolder);
    Base::Space space;
    if (!Base::ReadSpace(Native(folder), space))
        return;
    if (space.freeBytes && needs.bytes > qint64(*space.freeBytes))
        findings.append(
            {FindingKind::NoSpace, job.cloudFolder, needs.bytes, qint64(*space.freeBytes)});
    if (space.freeFiles && needs.files > qint64(*space.freeFiles))
        findings.append(
            {FindingKind::NoFiles, job.cloudFolder, needs.files, qint64(*space.freeFiles)});
}

void FindUnwritableFolders(const Needs& needs, QList<Finding>& findings)
{
    QSet<QString> seen;
    for (const QString& folder : needs.folders) {
        const QString existing = ExistingAbove(folder);
        if (seen.contains(existing))
            continue;
        seen.insert(existing);
        const QFileInfo info(existing);
        if (info.isDir() && !info.isWritable())
            findings.append({FindingKind::FolderNotWritable, existing, 0, 0});
    }
}

void FindLackOfBaseStore(const Needs& needs, QList<Finding>& findings)
{
    if (needs.oldFiles == 0)
        return;
    const SyncServices::BaseStoreStatus store = SyncManager::GetInstance()->GetBaseStoreStatus();
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
    FindLackOfSpace(job, needs, findings);
    FindUnwritableFolders(needs, findings);
    FindLackOfBaseStore(needs, findings);
    return findings;
}

} // namespace Halvern::Jobs
