// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/SyncDatabase.h"

#include <QtCore/QStringList>

#include <functional>

namespace Halvern::Test {

/// Stands in front of the real database: notes what is asked and written, and lets a test refuse
/// writes or step in between.
class WatchedDatabase : public SyncServices::SyncDatabase
{
public:
    using Item = std::shared_ptr<SyncServices::SyncItem>;
    using Mapping = std::shared_ptr<SyncServices::FileMapping>;

    /// Puts one in front of the database of the running services, until they end.
    static std::shared_ptr<WatchedDatabase> Install();

    explicit WatchedDatabase(std::shared_ptr<SyncDatabase> real);

    Item GetSyncItem(const QString& localPath, bool exactPath, int authenticationId,
                     SyncServices::FileItem::Depth depth) override;
    Item GetFolder(int folderId, SyncServices::FileItem::Depth depth) override;
    Item AddRootFolder(const QString& folderPath, const QString& cloudRoot,
                       int authenticationId) override;
    Item AddFolderItem(Item parent, const QString& folderPath) override;
    bool AddOrUpdateFileConfiguration(Item item) override;
    QList<Item> GetFilesWithSyncOption(int folderId,
                                       SyncServices::SyncItem::SyncOption option) override;
    QList<Item> GetAllItems(int authenticationId) override;
    QList<Mapping> GetFileCopyHistoryByAuthenticationId(int authenticationId) override;
    bool AddAndUpdateFileCopyHistory(QList<Mapping> added, QList<Mapping> updated) override;
    bool DeleteAllFileCopyHistory(int authenticationId) override;
    QString GetLastError() const override;

    void Clear();

    /// Local paths, in the order of the calls.
    QStringList queried;
    QStringList written;
    QStringList foldersAdded;
    /// Options, one per write.
    QList<SyncServices::SyncItem::SyncOption> writtenOptions;
    int historyWrites = 0;
    bool refuseWrites = false;
    bool refuseFolders = false;
    /// Given in place of what GetFilesWithSyncOption finds.
    std::function<QList<Item>(QList<Item>)> filesWithOption;

private:
    std::shared_ptr<SyncDatabase> m_real;
};

} // namespace Halvern::Test
