// SPDX-License-Identifier: Apache-2.0

#include "JobDatabase.h"

namespace Halvern::Jobs {

using SyncServices::FileItem;
using SyncServices::FileMapping;
using SyncServices::SyncItem;

JobDatabase::JobDatabase(std::shared_ptr<SyncDatabase> store)
    : m_store(std::move(store)), m_errorBefore(m_store->GetLastError())
{}

QString JobDatabase::FailureOfThisJob() const
{
    const QString error = m_store->GetLastError();
    return m_writeFailed || error != m_errorBefore ? error : QString();
}

template <typename Result>
Result JobDatabase::Noted(Result result)
{
    m_writeFailed = m_writeFailed || !result;
    return result;
}

std::shared_ptr<SyncItem> JobDatabase::GetSyncItem(const QString& localPath, bool exactPath,
                                                   int authenticationId, FileItem::Depth depth)
{
    return m_store->GetSyncItem(localPath, exactPath, authenticationId, depth);
}

std::shared_ptr<SyncItem> JobDatabase::GetFolder(int folderId, FileItem::Depth depth)
{
    return m_store->GetFolder(folderId, depth);
}

std::shared_ptr<SyncItem> JobDatabase::AddRootFolder(const QString& folderPath,
                                                     const QString& cloudRoot, int authenticationId)
{
    return m_writable ? Noted(m_store->AddRootFolder(folderPath, cloudRoot, authenticationId))
                      : nullptr;
}

/// A path that does not lie in the parent is no failure of the database.
std::shared_ptr<SyncItem> JobDatabase::AddFolderItem(std::shared_ptr<SyncItem> parent,
                                                     const QString& folderPath)
{
    return m_writable ? m_store->AddFolderItem(std::move(parent), folderPath) : nullptr;
}

bool JobDatabase::AddOrUpdateFileConfiguration(std::shared_ptr<SyncItem> item)
{
    return !m_writable || Noted(m_store->AddOrUpdateFileConfiguration(std::move(item)));
}

QList<std::shared_ptr<SyncItem>> JobDatabase::GetFilesWithSyncOption(int folderId,
                                                                     SyncItem::SyncOption option)
{
    return m_store->GetFilesWithSyncOption(folderId, option);
}

QList<std::shared_ptr<SyncItem>> JobDatabase::GetAllItems(int authenticationId)
{
    return m_store->GetAllItems(authenticationId);
}

QList<std::shared_ptr<FileMapping>>
JobDatabase::GetFileCopyHistoryByAuthenticationId(int authenticationId)
{
    return m_store->GetFileCopyHistoryByAuthenticationId(authenticationId);
}

bool JobDatabase::AddAndUpdateFileCopyHistory(QList<std::shared_ptr<FileMapping>> added,
                                              QList<std::shared_ptr<FileMapping>> updated)
{
    return !m_writable || Noted(m_store->AddAndUpdateFileCopyHistory(added, updated));
}

bool JobDatabase::DeleteAllFileCopyHistory(int authenticationId)
{
    return !m_writable || Noted(m_store->DeleteAllFileCopyHistory(authenticationId));
}

QString JobDatabase::GetLastError() const
{
    return m_store->GetLastError();
}

} // namespace Halvern::Jobs
