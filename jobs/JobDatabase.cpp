// SPDX-License-Identifier: Apache-2.0

#include "JobDatabase.h"

namespace Halvern::Jobs {

using SyncServices::FileItem;
using SyncServices::FileMapping;
using SyncServices::SyncItem;

JobDatabase::JobDatabase(std::shared_ptr<SyncDatabase> store) : m_store(std::move(store)) {}

/// Other jobs use the store in between: only what happens during a call is this job's.
template <typename Call>
auto JobDatabase::Watched(Call call)
{
    const quint64 failures = m_store->GetFailureCount();
    const QString error = m_store->GetLastError();
    auto result = call(*m_store);
    const QString errorNow = m_store->GetLastError();
    if (m_failure.isEmpty() && (m_store->GetFailureCount() != failures || errorNow != error))
        m_failure = errorNow;
    return result;
}

template <typename Call>
auto JobDatabase::Written(Call call)
{
    auto result = Watched(call);
    if (m_failure.isEmpty() && !result)
        m_failure = m_store->GetLastError();
    if (m_failure.isEmpty() && !result)
        m_failure = QStringLiteral("it did not take a record, without a reason");
    return result;
}

std::shared_ptr<SyncItem> JobDatabase::GetSyncItem(const QString& localPath, bool exactPath,
                                                   int authenticationId, FileItem::Depth depth)
{
    return Watched([&](SyncDatabase& store) {
        return store.GetSyncItem(localPath, exactPath, authenticationId, depth);
    });
}

std::shared_ptr<SyncItem> JobDatabase::GetFolder(int folderId, FileItem::Depth depth)
{
    return Watched([&](SyncDatabase& store) { return store.GetFolder(folderId, depth); });
}

std::shared_ptr<SyncItem> JobDatabase::AddRootFolder(const QString& folderPath,
                                                     const QString& cloudRoot, int authenticationId)
{
    if (!m_writable)
        return nullptr;
    return Written([&](SyncDatabase& store) {
        return store.AddRootFolder(folderPath, cloudRoot, authenticationId);
    });
}

/// That there is no item says nothing: the path need not lie in the parent.
std::shared_ptr<SyncItem> JobDatabase::AddFolderItem(std::shared_ptr<SyncItem> parent,
                                                     const QString& folderPath)
{
    if (!m_writable)
        return nullptr;
    return Watched(
        [&](SyncDatabase& store) { return store.AddFolderItem(std::move(parent), folderPath); });
}

bool JobDatabase::AddOrUpdateFileConfiguration(std::shared_ptr<SyncItem> item)
{
    return !m_writable || Written([&](SyncDatabase& store) {
        return store.AddOrUpdateFileConfiguration(std::move(item));
    });
}

QList<std::shared_ptr<SyncItem>> JobDatabase::GetFilesWithSyncOption(int folderId,
                                                                     SyncItem::SyncOption option)
{
    return Watched(
        [&](SyncDatabase& store) { return store.GetFilesWithSyncOption(folderId, option); });
}

QList<std::shared_ptr<SyncItem>> JobDatabase::GetAllItems(int authenticationId)
{
    return Watched([&](SyncDatabase& store) { return store.GetAllItems(authenticationId); });
}

QList<std::shared_ptr<FileMapping>>
JobDatabase::GetFileCopyHistoryByAuthenticationId(int authenticationId)
{
    return Watched([&](SyncDatabase& store) {
        return store.GetFileCopyHistoryByAuthenticationId(authenticationId);
    });
}

bool JobDatabase::AddAndUpdateFileCopyHistory(QList<std::shared_ptr<FileMapping>> added,
                                              QList<std::shared_ptr<FileMapping>> updated)
{
    return !m_writable || Written([&](SyncDatabase& store) {
        return store.AddAndUpdateFileCopyHistory(added, updated);
    });
}

bool JobDatabase::DeleteAllFileCopyHistory(int authenticationId)
{
    return !m_writable || Written([&](SyncDatabase& store) {
        return store.DeleteAllFileCopyHistory(authenticationId);
    });
}

QString JobDatabase::GetLastError() const
{
    return m_store->GetLastError();
}

quint64 JobDatabase::GetFailureCount() const
{
    return m_store->GetFailureCount();
}

} // namespace Halvern::Jobs
