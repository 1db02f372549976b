// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"
#include "syncservices/FileMapping.h"
#include "syncservices/SyncItem.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <memory>

namespace Halvern::SyncServices {

/// The store of items and copy history. FolderManager hands out the embedded one, a SQLite file;
/// a host may put its own in its place (FolderManager::SetSyncDatabase).
///
/// Paths are local, absolute paths. Two paths that differ in letter case alone are two records when
/// the disk has both as files or folders of their own; otherwise they are two spellings of one,
/// which is found by either. A record of exactly the path that is asked for comes first. On Windows
/// letter case never counts.
///
/// Operations are safe to call from several threads, one at a time inside, and from several
/// processes on one file. None throws; a failure is the result named, and GetLastError() tells the
/// reason. Results that are null or empty also when nothing is there do not tell the two apart;
/// GetLastError() is not cleared by what succeeds.
///
/// Items and mappings handed out are the caller's own copies: changing them changes nothing here.
class SYNCSERVICES_EXPORT SyncDatabase
{
public:
    virtual ~SyncDatabase();

    /// The item of a local path with its links in order, or null. With `exactPath` the path itself
    /// must have an item; otherwise the nearest folder above that has one answers.
    /// `authenticationId` -1 accepts an item of any user.
    virtual std::shared_ptr<SyncItem> GetSyncItem(const QString& localPath, bool exactPath,
                                                  int authenticationId, FileItem::Depth depth) = 0;
    /// The folder or root item with this id, or null.
    virtual std::shared_ptr<SyncItem> GetFolder(int folderId, FileItem::Depth depth) = 0;
    /// Finds or makes the root item of a local folder; null on failure.
    [[nodiscard]] virtual std::shared_ptr<SyncItem>
    AddRootFolder(const QString& folderPath, const QString& cloudRoot, int authenticationId) = 0;
    /// Finds or makes the item of `folderPath`, and of each folder between it and `parent`. The
    /// folder of `parent` itself gives that item. Null on failure, and for a path that does not
    /// lie in the folder of `parent`.
    [[nodiscard]] virtual std::shared_ptr<SyncItem> AddFolderItem(std::shared_ptr<SyncItem> parent,
                                                                  const QString& folderPath) = 0;
    /// Writes an item with its links and options: a new one when its id is -1 and its path has none
    /// yet, otherwise the existing one. The item learns its id and cloud item id. True when it is
    /// written; false, with nothing changed, when it is not.
    [[nodiscard]] virtual bool AddOrUpdateFileConfiguration(std::shared_ptr<SyncItem> item) = 0;
    /// The file items at any depth below a folder that have all bits of `option`, ordered by path.
    virtual QList<std::shared_ptr<SyncItem>>
    GetFilesWithSyncOption(int folderId, SyncItem::SyncOption option) = 0;
    /// All items of a user (-1: of any), ordered by path.
    virtual QList<std::shared_ptr<SyncItem>> GetAllItems(int authenticationId) = 0;

    /// One mapping per source file that the user ever copied, with target, dates and links,
    /// without flags. Ordered by row, so that a later copy of a source comes later.
    virtual QList<std::shared_ptr<FileMapping>>
    GetFileCopyHistoryByAuthenticationId(int authenticationId) = 0;
    /// Writes all in one transaction: all or nothing. There is one row per user and source path, so
    /// an added mapping whose row exists replaces it. True when all are written.
    [[nodiscard]] virtual bool
    AddAndUpdateFileCopyHistory(QList<std::shared_ptr<FileMapping>> added,
                                QList<std::shared_ptr<FileMapping>> updated) = 0;
    /// Forgets every copy of one user. True when none is left, also when there was none.
    [[nodiscard]] virtual bool DeleteAllFileCopyHistory(int authenticationId) = 0;

    /// Why the last failing operation failed; empty when none did.
    virtual QString GetLastError() const = 0;
    /// How many operations have failed: the same error may come twice. A store that does not count
    /// answers 0 always.
    virtual quint64 GetFailureCount() const;
};

} // namespace Halvern::SyncServices
