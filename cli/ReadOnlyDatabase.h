// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/SyncDatabase.h"

namespace Halvern::Cli {

/// Answers questions from another store and drops every write: what the module has while a job is
/// only planned, so that a dry run and a job that stops before it copies leave nothing behind.
class ReadOnlyDatabase : public SyncServices::SyncDatabase
{
public:
    explicit ReadOnlyDatabase(std::shared_ptr<SyncDatabase> store) : m_store(std::move(store)) {}

    std::shared_ptr<SyncServices::SyncItem>
    GetSyncItem(const QString& localPath, bool exactPath, int authenticationId,
                SyncServices::FileItem::Depth depth) override;
    std::shared_ptr<SyncServices::SyncItem> GetFolder(int folderId,
                                                      SyncServices::FileItem::Depth depth) override;
    std::shared_ptr<SyncServices::SyncItem> AddRootFolder(const QString& folderPath,
                                                          const QString& cloudRoot,
                                                          int authenticationId) override;
    std::shared_ptr<SyncServices::SyncItem>
    AddFolderItem(std::shared_ptr<SyncServices::SyncItem> parent,
                  const QString& folderPath) override;
    bool AddOrUpdateFileConfiguration(std::shared_ptr<SyncServices::SyncItem> item) override;
    QList<std::shared_ptr<SyncServices::SyncItem>>
    GetFilesWithSyncOption(int folderId, SyncServices::SyncItem::SyncOption option) override;
    QList<std::shared_ptr<SyncServices::SyncItem>> GetAllItems(int authenticationId) override;
    QList<std::shared_ptr<SyncServices::FileMapping>>
    GetFileCopyHistoryByAuthenticationId(int authenticationId) override;
    bool
    AddAndUpdateFileCopyHistory(QList<std::shared_ptr<SyncServices::FileMapping>> added,
                                QList<std::shared_ptr<SyncServices::FileMapping>> updated) override;
    bool DeleteAllFileCopyHistory(int authenticationId) override;
    QString GetLastError() const override;

private:
    std::shared_ptr<SyncDatabase> m_store;
};

} // namespace Halvern::Cli
