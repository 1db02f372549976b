// SPDX-License-Identifier: Apache-2.0

#include "ReadOnlyDatabase.h"

namespace Halvern::Cli {

using SyncServices::FileItem;
using SyncServices::FileMapping;
using SyncServices::SyncItem;

std::shared_ptr<SyncItem> ReadOnlyDatabase::GetSyncItem(const QString& localPath, bool exactPath,
                                                        int authenticationId, FileItem::Depth depth)
{
    return m_store->GetSyncItem(localPath, exactPath, authenticationId, depth);
}

std::shared_ptr<SyncItem> ReadOnlyDatabase::GetFolder(int folderId, FileItem::Depth depth)
{
    return m_store->GetFolder(folderId, depth);
}

std::shared_ptr<SyncItem> ReadOnlyDatabase::AddRootFolder(const QString&, const QString&, int)
{
    return nullptr;
}

std::shared_ptr<SyncItem> ReadOnlyDatabase::AddFolderItem(std::shared_ptr<SyncItem>, const QString&)
{
    return nullptr;
}

bool ReadOnlyDatabase::AddOrUpdateFileConfiguration(std::shared_ptr<SyncItem>)
{
    return true;
}

QList<std::shared_ptr<SyncItem>>
ReadOnlyDatabase::GetFilesWithSyncOption(int folderId, SyncItem::SyncOption option)
{
    return m_store->GetFilesWithSyncOption(folderId, option);
}

QList<std::shared_ptr<SyncItem>> ReadOnlyDatabase::GetAllItems(int authenticationId)
{
    return m_store->GetAllItems(authenticationId);
}

QList<std::shared_ptr<FileMapping>>
ReadOnlyDatabase::GetFileCopyHistoryByAuthenticationId(int authenticationId)
{
    return m_store->GetFileCopyHistoryByAuthenticationId(authenticationId);
}

bool ReadOnlyDatabase::AddAndUpdateFileCopyHistory(QList<std::shared_ptr<FileMapping>>,
                                                   QList<std::shared_ptr<FileMapping>>)
{
    return true;
}

bool ReadOnlyDatabase::DeleteAllFileCopyHistory(int)
{
    return true;
}

QString ReadOnlyDatabase::GetLastError() const
{
    return m_store->GetLastError();
}

} // namespace Halvern::Cli
