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
    /// Why the database failed since the job began; empty when it did not.
    QString FailureOfThisJob() const;

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
    /// Notes a write that failed, and hands its result on.
    template <typename Result>
    Result Noted(Result result);

    std::shared_ptr<SyncDatabase> m_store;
    const QString m_errorBefore;
    bool m_writable = false;
    bool m_writeFailed = false;
};

} // namespace Halvern::Jobs
