// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/SyncDatabase.h"

#include <QtCore/QStringList>

#include <memory>

namespace Halvern::Test {

/// Passes everything on to another store and remembers the calls about copy history.
class CountingDatabase : public SyncServices::SyncDatabase
{
public:
    using SyncItem = SyncServices::SyncItem;
    using FileItem = SyncServices::FileItem;
    using FileMapping = SyncServices::FileMapping;
    template <typename Record>
    using List = QList<std::shared_ptr<Record>>;

    explicit CountingDatabase(std::shared_ptr<SyncDatabase> store);

    /// "read 7", "write +/w/a.prt ~/w/b.prt" (added and updated, each in order of path).
    QStringList calls;

    std::shared_ptr<SyncItem> GetSyncItem(const QString& localPath, bool exactPath,
                                          int authenticationId, FileItem::Depth depth) override;
    std::shared_ptr<SyncItem> GetFolder(int folderId, FileItem::Depth depth) override;
    std::shared_ptr<SyncItem> AddRootFolder(const QString& folderPath, const QString& cloudRoot,
                                            int authenticationId) override;
    std::shared_ptr<SyncItem> AddFolderItem(std::shared_ptr<SyncItem> parent,
                                            const QString& folderPath) override;
    bool AddOrUpdateFileConfiguration(std::shared_ptr<SyncItem> item) override;
    List<SyncItem> GetFilesWithSyncOption(int folderId, SyncItem::SyncOption option) override;
    List<SyncItem> GetAllItems(int authenticationId) override;
    List<FileMapping> GetFileCopyHistoryByAuthenticationId(int authenticationId) override;
    bool AddAndUpdateFileCopyHistory(List<FileMapping> added, List<FileMapping> updated) override;
    bool DeleteAllFileCopyHistory(int authenticationId) override;
    QString GetLastError() const override;

private:
    const std::shared_ptr<SyncDatabase> m_store;
};

} // namespace Halvern::Test
