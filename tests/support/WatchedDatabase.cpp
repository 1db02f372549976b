// SPDX-License-Identifier: Apache-2.0

#include "WatchedDatabase.h"

#include "syncservices/FolderManager.h"

#include <utility>

namespace Halvern::Test {

using SyncFolderManagerLib::FolderManager;
using namespace SyncServices;

std::shared_ptr<WatchedDatabase> WatchedDatabase::Install()
{
    FolderManager* const manager = FolderManager::GetInstance();
    // Makes the root item, so that it is not among the writes.
    manager->GetSyncRootFolder(manager->GetCloudCacheFolderPath(false));
    const auto watched = std::make_shared<WatchedDatabase>(manager->GetSyncDatabase());
    manager->SetSyncDatabase(watched);
    return watched;
}

WatchedDatabase::WatchedDatabase(std::shared_ptr<SyncDatabase> real) : m_real(std::move(real)) {}

WatchedDatabase::Item WatchedDatabase::GetSyncItem(const QString& localPath, bool exactPath,
                                                   int authenticationId, FileItem::Depth depth)
{
    queried.append(localPath);
    return m_real->GetSyncItem(localPath, exactPath, authenticationId, depth);
}

WatchedDatabase::Item WatchedDatabase::GetFolder(int folderId, FileItem::Depth depth)
{
    return m_real->GetFolder(folderId, depth);
}

WatchedDatabase::Item WatchedDatabase::AddRootFolder(const QString& folderPath,
                                                     const QString& cloudRoot, int authenticationId)
{
    return refuseWrites ? nullptr : m_real->AddRootFolder(folderPath, cloudRoot, authenticationId);
}

WatchedDatabase::Item WatchedDatabase::AddFolderItem(Item parent, const QString& folderPath)
{
    foldersAdded.append(folderPath);
    return refuseFolders || refuseWrites ? nullptr : m_real->AddFolderItem(parent, folderPath);
}

bool WatchedDatabase::AddOrUpdateFileConfiguration(Item item)
{
    written.append(item->GetLocalPath());
    writtenOptions.append(item->GetSyncOption());
    return !refuseWrites && m_real->AddOrUpdateFileConfiguration(item);
}

QList<WatchedDatabase::Item> WatchedDatabase::GetFilesWithSyncOption(int folderId,
                                                                     SyncItem::SyncOption option)
{
    const QList<Item> items = m_real->GetFilesWithSyncOption(folderId, option);
    return filesWithOption ? filesWithOption(items) : items;
}

QList<WatchedDatabase::Item> WatchedDatabase::GetAllItems(int authenticationId)
{
    return m_real->GetAllItems(authenticationId);
}

QList<WatchedDatabase::Mapping>
WatchedDatabase::GetFileCopyHistoryByAuthenticationId(int authenticationId)
{
    return m_real->GetFileCopyHistoryByAuthenticationId(authenticationId);
}

bool WatchedDatabase::AddAndUpdateFileCopyHistory(QList<Mapping> added, QList<Mapping> updated)
{
    ++historyWrites;
    return !refuseWrites && m_real->AddAndUpdateFileCopyHistory(added, updated);
}

bool WatchedDatabase::DeleteAllFileCopyHistory(int authenticationId)
{
    return !refuseWrites && m_real->DeleteAllFileCopyHistory(authenticationId);
}

QString WatchedDatabase::GetLastError() const
{
    return m_real->GetLastError();
}

void WatchedDatabase::Clear()
{
    queried.clear();
    written.clear();
    foldersAdded.clear();
    writtenOptions.clear();
    historyWrites = 0;
}

} // namespace Halvern::Test
