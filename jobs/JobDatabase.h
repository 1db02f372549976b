// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/SyncDatabase.h"

namespace Halvern::Jobs {

/// The session's database as one job sees it: until the job is executed every write is dropped, so
/// that a job that is only planned, or stops before it copies, leaves nothing behind. It knows
/// whether the database failed during this job.
class JobDatabase : public SyncServices::SyncDatabase
{
public:
    explicit JobDatabase(std::shared_ptr<SyncDatabase> store);

    void AllowWrites() { m_writable = true; }
    /// Why the database first failed in a call of this job; empty when it did not.
    const QString& FailureOfThisJob() const { return m_failure; }

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
    quint64 GetFailureCount() const override;

private:
    /// Hands on what the call gives, and notes when the store failed during it.
    template <typename Call>
    auto Watched(Call call);
    /// Of a write no result is a failure, too, whatever the store says.
    template <typename Call>
    auto Written(Call call);

    std::shared_ptr<SyncDatabase> m_store;
    QString m_failure;
    bool m_writable = false;
};

} // namespace Halvern::Jobs
