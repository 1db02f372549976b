// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/SyncItem.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <memory>

namespace Halvern::SyncServices {

class SqliteConnection;

/// The statements on sync items. Each function runs in a transaction of the caller's, and throws.
namespace SqliteItems {

using ItemPointer = std::shared_ptr<SyncItem>;

/// The item of this very path, or else the oldest one whose path differs in letter case alone and
/// is no twin of this one. `authenticationId` -1 for any user.
ItemPointer FindByPath(SqliteConnection& connection, const QString& path, int authenticationId);
/// The item of the nearest folder above that has one.
ItemPointer FindFolderAbove(SqliteConnection& connection, const QString& path,
                            int authenticationId);
ItemPointer FindFolder(SqliteConnection& connection, int id);
QList<ItemPointer> FindFilesBelow(SqliteConnection& connection, const SyncItem& folder,
                                  SyncItem::SyncOption option);
QList<ItemPointer> FindAll(SqliteConnection& connection, int authenticationId);

/// What the database gave an item that was written.
struct Identity
{
    int id;
    QString cloudItemId;
};
/// Writes the item with its links and leaves the record as it is.
Identity Write(SqliteConnection& connection, const SyncItem& item);
/// The same, and the record learns its identity: for records that nobody else has yet.
void WriteNew(SqliteConnection& connection, SyncItem& item);

} // namespace SqliteItems

} // namespace Halvern::SyncServices
