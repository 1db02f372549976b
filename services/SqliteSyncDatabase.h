// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/SyncDatabase.h"

#include <memory>
#include <mutex>
#include <utility>

namespace Halvern::SyncServices {

class SqliteConnection;

/// The embedded sync database: one SQLite file, which several processes may have open.
///
/// A write is on its way to the disk when its operation returns true: no kill of the process takes
/// it back, and a power cut takes back the last moments at most, whole operations at a time.
class SqliteSyncDatabase : public SyncDatabase
{
public:
    /// Opens `file` (":memory:" for one that is gone at the end), making it when missing. An
    /// operation waits up to `busyTimeout` milliseconds for another process that writes. Null with
    /// `error` naming file and reason.
    static std::shared_ptr<SqliteSyncDatabase> Open(const QString& file, int busyTimeout,
                                                    QString* error);
    ~SqliteSyncDatabase() override;

    std::shared_ptr<SyncItem> GetSyncItem(const QString& localPath, bool exactPath,
                                          int authenticationId, FileItem::Depth depth) override;
    std::shared_ptr<SyncItem> GetFolder(int folderId, FileItem::Depth depth) override;
    std::shared_ptr<SyncItem> AddRootFolder(const QString& folderPath, const QString& cloudRoot,
                                            int authenticationId) override;
    std::shared_ptr<SyncItem> AddFolderItem(std::shared_ptr<SyncItem> parent,
                                            const QString& folderPath) override;
    bool AddOrUpdateFileConfiguration(std::shared_ptr<SyncItem> item) override;
    QList<std::shared_ptr<SyncItem>> GetFilesWithSyncOption(int folderId,
                                                            SyncItem::SyncOption option) override;
    QList<std::shared_ptr<SyncItem>> GetAllItems(int authenticationId) override;

    QList<std::shared_ptr<FileMapping>>
    GetFileCopyHistoryByAuthenticationId(int authenticationId) override;
    bool AddAndUpdateFileCopyHistory(QList<std::shared_ptr<FileMapping>> added,
                                     QList<std::shared_ptr<FileMapping>> updated) override;
    bool DeleteAllFileCopyHistory(int authenticationId) override;

    QString GetLastError() const override;
    quint64 GetFailureCount() const override;

private:
    SqliteSyncDatabase(const QString& file, std::unique_ptr<SqliteConnection> connection);

    /// Runs an operation on the connection, alone; an exception becomes `failed` and the last
    /// error.
    template <typename Result, typename Operation>
    Result Run(const char* name, Result failed, Operation operation);
    void Remember(const char* operation, const char* reason);

    const QString m_file;
    mutable std::mutex m_mutex;
    const std::unique_ptr<SqliteConnection> m_connection;
    QString m_lastError;
    quint64 m_failures = 0;
};

} // namespace Halvern::SyncServices
