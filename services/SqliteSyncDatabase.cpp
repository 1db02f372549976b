// SPDX-License-Identifier: Apache-2.0

#include "services/SqliteSyncDatabase.h"

#include "services/Paths.h"
#include "services/Spellings.h"
#include "services/SqliteConnection.h"
#include "services/SqliteCopyHistory.h"
#include "services/SqliteItems.h"

#include <QtCore/QDir>

#include <exception>
#include <optional>
#include <stdexcept>

namespace Halvern::SyncServices {

namespace {

using ItemPointer = std::shared_ptr<SyncItem>;

ItemPointer NewFolder(const SyncItem& parent, const QString& localPath, const QString& name)
{
    const auto folder = std::make_shared<SyncItem>(localPath, JoinPath(parent.GetCloudPath(), name),
                                                   parent.GetCloudRoot());
    folder->SetKind(SyncItem::FolderItem);
    folder->SetAuthenticationId(parent.GetAuthenticationId());
    folder->SetProductConfigurationId(parent.GetProductConfigurationId());
    folder->SetSourceConsumerId(parent.GetSourceConsumerId());
    folder->SetParentFolderId(parent.GetId());
    folder->SetRootFolderId(parent.GetKind() == SyncItem::RootFolder ? parent.GetId()
                                                                     : parent.GetRootFolderId());
    return folder;
}

bool IsFolder(const ItemPointer& item)
{
    return item && item->GetKind() != SyncItem::File;
}

/// Finds or makes the folders from `parent` down to `below`.
ItemPointer MakeFolders(SqliteConnection& connection, const ItemPointer& parent,
                        const QString& below)
{
    ItemPointer folder = parent;
    QString path = QDir::cleanPath(parent->GetLocalPath());
    for (const QString& name : below.split(u'/')) {
        path = JoinPath(path, name);
        ItemPointer next = SqliteItems::FindByPath(connection, path, parent->GetAuthenticationId());
        if (!IsFolder(next)) {
            // A file that was recorded here before has given way to a folder.
            next = NewFolder(*folder, path, name);
            SqliteItems::WriteNew(connection, *next);
        }
        folder = next;
    }
    return folder;
}

/// Makes the root item, or turns a folder that was recorded below another root into one.
ItemPointer MakeRoot(SqliteConnection& connection, const QString& folderPath,
                     const QString& cloudRoot, const ItemPointer& existing, int authenticationId)
{
    const auto root = std::make_shared<SyncItem>(folderPath, QStringLiteral("/"), cloudRoot);
    root->SetKind(SyncItem::RootFolder);
    root->SetAuthenticationId(authenticationId);
    if (existing) {
        root->SetProductConfigurationId(existing->GetProductConfigurationId());
        root->SetSourceConsumerId(existing->GetSourceConsumerId());
    }
    SqliteItems::WriteNew(connection, *root);
    root->SetRootFolderId(root->GetId());
    SqliteItems::WriteNew(connection, *root);
    return root;
}

} // namespace

SyncDatabase::~SyncDatabase() = default;

quint64 SyncDatabase::GetFailureCount() const
{
    return 0;
}

SqliteSyncDatabase::SqliteSyncDatabase(const QString& file,
                                       std::unique_ptr<SqliteConnection> connection)
    : m_file(file), m_connection(std::move(connection))
{}

SqliteSyncDatabase::~SqliteSyncDatabase() = default;

std::shared_ptr<SqliteSyncDatabase> SqliteSyncDatabase::Open(const QString& file, int busyTimeout,
                                                             QString* error)
{
    try {
        auto connection = std::make_unique<SqliteConnection>(file, busyTimeout);
        return std::shared_ptr<SqliteSyncDatabase>(
            new SqliteSyncDatabase(file, std::move(connection)));
    } catch (const std::exception& failure) {
        *error = QStringLiteral("Failed to open sync database %1: %2")
                     .arg(file, QString::fromUtf8(failure.what()));
    }
    return nullptr;
}

template <typename Result, typename Operation>
Result SqliteSyncDatabase::Run(const char* name, Result failed, Operation operation)
{
    const std::lock_guard lock(m_mutex);
    try {
        return operation(*m_connection);
    } catch (const std::exception& failure) {
        Remember(name, failure.what());
    }
    return failed;
}

void SqliteSyncDatabase::Remember(const char* operation, const char* reason)
{
    m_lastError = QStringLiteral("%1 failed on sync database %2: %3")
                      .arg(QString::fromLatin1(operation), m_file, QString::fromUtf8(reason));
    ++m_failures;
}

ItemPointer SqliteSyncDatabase::GetSyncItem(const QString& localPath, bool exactPath,
                                            int authenticationId, FileItem::Depth)
{
    return Run("GetSyncItem", ItemPointer(), [&](SqliteConnection& connection) {
        const SqliteTransaction transaction(connection, SqliteTransaction::Read);
        const ItemPointer item = SqliteItems::FindByPath(connection, localPath, authenticationId);
        return item || exactPath
                   ? item
                   : SqliteItems::FindFolderAbove(connection, localPath, authenticationId);
    });
}

ItemPointer SqliteSyncDatabase::GetFolder(int folderId, FileItem::Depth)
{
    return Run("GetFolder", ItemPointer(), [&](SqliteConnection& connection) {
        const SqliteTransaction transaction(connection, SqliteTransaction::Read);
        return SqliteItems::FindFolder(connection, folderId);
    });
}

ItemPointer SqliteSyncDatabase::AddRootFolder(const QString& folderPath, const QString& cloudRoot,
                                              int authenticationId)
{
    return Run("AddRootFolder", ItemPointer(), [&](SqliteConnection& connection) {
        const QString path = QDir::cleanPath(folderPath);
        if (path.isEmpty())
            throw std::invalid_argument("The folder has no path.");
        SqliteTransaction transaction(connection, SqliteTransaction::Write);
        ItemPointer root = SqliteItems::FindByPath(connection, path, authenticationId);
        if (!root || root->GetKind() != SyncItem::RootFolder || root->GetCloudRoot() != cloudRoot)
            root = MakeRoot(connection, path, cloudRoot, root, authenticationId);
        transaction.Commit();
        return root;
    });
}

ItemPointer SqliteSyncDatabase::AddFolderItem(ItemPointer parent, const QString& folderPath)
{
    return Run("AddFolderItem", ItemPointer(), [&](SqliteConnection& connection) {
        if (!IsFolder(parent) || parent->GetId() < 0)
            throw std::invalid_argument("The parent is not a folder of the database.");
        const QString path = QDir::cleanPath(folderPath);
        const QString parentPath = QDir::cleanPath(parent->GetLocalPath());
        const std::optional<QString> below = PathBelow(parentPath, path);
        if (!below || AreTwins(path.left(parentPath.size()), parentPath))
            throw std::invalid_argument("The folder does not lie in its parent.");
        if (below->isEmpty())
            return parent;
        // Asked for each new file, and there already for all but the first: that must not make
        // other processes wait.
        const ItemPointer existing =
            SqliteItems::FindByPath(connection, path, parent->GetAuthenticationId());
        if (IsFolder(existing))
            return existing;
        SqliteTransaction transaction(connection, SqliteTransaction::Write);
        const ItemPointer folder = MakeFolders(connection, parent, *below);
        transaction.Commit();
        return folder;
    });
}

bool SqliteSyncDatabase::AddOrUpdateFileConfiguration(ItemPointer item)
{
    return Run("AddOrUpdateFileConfiguration", false, [&](SqliteConnection& connection) {
        if (!item)
            throw std::invalid_argument("There is no item.");
        SqliteTransaction transaction(connection, SqliteTransaction::Write);
        const SqliteItems::Identity identity = SqliteItems::Write(connection, *item);
        transaction.Commit();
        item->SetId(identity.id);
        item->SetCloudItemId(identity.cloudItemId);
        return true;
    });
}

QList<ItemPointer> SqliteSyncDatabase::GetFilesWithSyncOption(int folderId,
                                                              SyncItem::SyncOption option)
{
    return Run("GetFilesWithSyncOption", QList<ItemPointer>(), [&](SqliteConnection& connection) {
        const SqliteTransaction transaction(connection, SqliteTransaction::Read);
        const ItemPointer folder = SqliteItems::FindFolder(connection, folderId);
        return folder ? SqliteItems::FindFilesBelow(connection, *folder, option)
                      : QList<ItemPointer>();
    });
}

QList<ItemPointer> SqliteSyncDatabase::GetAllItems(int authenticationId)
{
    return Run("GetAllItems", QList<ItemPointer>(), [&](SqliteConnection& connection) {
        const SqliteTransaction transaction(connection, SqliteTransaction::Read);
        return SqliteItems::FindAll(connection, authenticationId);
    });
}

QList<std::shared_ptr<FileMapping>>
SqliteSyncDatabase::GetFileCopyHistoryByAuthenticationId(int authenticationId)
{
    return Run("GetFileCopyHistoryByAuthenticationId", QList<std::shared_ptr<FileMapping>>(),
               [&](SqliteConnection& connection) {
                   const SqliteTransaction transaction(connection, SqliteTransaction::Read);
                   return SqliteCopyHistory::Read(connection, authenticationId);
               });
}

bool SqliteSyncDatabase::AddAndUpdateFileCopyHistory(QList<std::shared_ptr<FileMapping>> added,
                                                     QList<std::shared_ptr<FileMapping>> updated)
{
    return Run("AddAndUpdateFileCopyHistory", false, [&](SqliteConnection& connection) {
        SqliteTransaction transaction(connection, SqliteTransaction::Write);
        for (const auto& list : {added, updated})
            for (const std::shared_ptr<FileMapping>& mapping : list)
                if (mapping)
                    SqliteCopyHistory::Write(connection, *mapping);
        transaction.Commit();
        return true;
    });
}

bool SqliteSyncDatabase::DeleteAllFileCopyHistory(int authenticationId)
{
    return Run("DeleteAllFileCopyHistory", false, [&](SqliteConnection& connection) {
        SqliteTransaction transaction(connection, SqliteTransaction::Write);
        SqliteCopyHistory::DeleteAll(connection, authenticationId);
        transaction.Commit();
        return true;
    });
}

QString SqliteSyncDatabase::GetLastError() const
{
    const std::lock_guard lock(m_mutex);
    return m_lastError;
}

quint64 SqliteSyncDatabase::GetFailureCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_failures;
}

} // namespace Halvern::SyncServices
