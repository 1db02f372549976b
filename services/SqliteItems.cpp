// SPDX-License-Identifier: Apache-2.0

#include "services/SqliteItems.h"

#include "services/Paths.h"
#include "services/Spellings.h"
#include "services/SqliteConnection.h"

#include <QtCore/QDir>
#include <QtCore/QHash>
#include <QtCore/QUuid>

#include <stdexcept>
#include <string>

namespace Halvern::SyncServices::SqliteItems {

namespace {

#define ITEM_COLUMNS                                                                               \
    "id, kind, authentication_id, local_path, cloud_path, cloud_root, cloud_item_id, "             \
    "product_configuration_id, root_folder_id, parent_folder_id, source_consumer_id, "             \
    "links_extracted_at, sync_option"

constexpr char selectByPath[] =
    "SELECT " ITEM_COLUMNS ", path_key = ?3 FROM items WHERE folded_key = ?1 "
    "AND (?2 = -1 OR authentication_id = ?2) AND (kind <> 0 OR NOT ?4) "
    "ORDER BY path_key <> ?3, id";
constexpr char selectFolder[] = "SELECT " ITEM_COLUMNS " FROM items WHERE id = ?1 AND kind <> 0";
constexpr char selectFilesBelow[] =
    "SELECT " ITEM_COLUMNS " FROM items WHERE folded_key > ?1 AND folded_key < ?2 "
    "AND authentication_id = ?3 AND kind = 0 AND (sync_option & ?4) = ?4 "
    "ORDER BY folded_key, path_key";
constexpr char selectAll[] = "SELECT " ITEM_COLUMNS " FROM items "
                             "WHERE ?1 = -1 OR authentication_id = ?1 "
                             "ORDER BY folded_key, path_key, authentication_id";
constexpr char insertItem[] = R"sql(
INSERT INTO items (kind, authentication_id, path_key, folded_key, local_path, cloud_path,
                   cloud_root, cloud_item_id, product_configuration_id, root_folder_id,
                   parent_folder_id, source_consumer_id, links_extracted_at, sync_option)
VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, nullif(?10, -1), nullif(?11, -1), ?12, ?13, ?14)
ON CONFLICT (path_key, authentication_id) DO UPDATE SET
    kind = excluded.kind, local_path = excluded.local_path, cloud_path = excluded.cloud_path,
    cloud_root = excluded.cloud_root,
    product_configuration_id = excluded.product_configuration_id,
    root_folder_id = excluded.root_folder_id, parent_folder_id = excluded.parent_folder_id,
    source_consumer_id = excluded.source_consumer_id,
    links_extracted_at = excluded.links_extracted_at, sync_option = excluded.sync_option
RETURNING id, cloud_item_id)sql";
constexpr char updateItem[] = R"sql(
UPDATE items SET
    kind = ?1, authentication_id = ?2, path_key = ?3, folded_key = ?4, local_path = ?5,
    cloud_path = ?6, cloud_root = ?7,
    cloud_item_id = CASE ?8 WHEN '' THEN cloud_item_id ELSE ?8 END,
    product_configuration_id = ?9, root_folder_id = nullif(?10, -1),
    parent_folder_id = nullif(?11, -1), source_consumer_id = ?12, links_extracted_at = ?13,
    sync_option = ?14
WHERE id = ?15
RETURNING id, cloud_item_id)sql";

constexpr SpellingQueries spellings = {
    "SELECT id, path_key, local_path FROM items WHERE folded_key = ?1 AND authentication_id = ?2 "
    "ORDER BY path_key <> ?3, id",
    "UPDATE items SET path_key = ?1 WHERE id = ?2"};

constexpr char selectLinks[] = "SELECT linked_item_id, reference_id, path, cloud_item_id "
                               "FROM item_links WHERE item_id = ? ORDER BY position";
constexpr char deleteLinks[] = "DELETE FROM item_links WHERE item_id = ?";
constexpr char insertLink[] = "INSERT INTO item_links (item_id, position, linked_item_id, "
                              "reference_id, path, cloud_item_id) VALUES (?, ?, ?, ?, ?, ?)";

QList<FileLink> ReadLinks(SqliteConnection& connection, int itemId)
{
    QList<FileLink> links;
    SqliteQuery query(connection, selectLinks);
    for (query.Bind(itemId); query.Step();)
        links.append(query.Link(0));
    return links;
}

void WriteLinks(SqliteConnection& connection, int itemId, const QList<FileLink>& links)
{
    // Most items that are written again have the links that they had: reading costs less.
    if (ReadLinks(connection, itemId) == links)
        return;
    SqliteQuery(connection, deleteLinks).Bind(itemId).Run();
    for (int i = 0; i < links.size(); ++i) {
        const FileLink& link = links.at(i);
        SqliteQuery(connection, insertLink)
            .Bind(itemId, i, link.ItemId, link.RefId, link.Path, link.CloudItemId)
            .Run();
    }
}

ItemPointer ReadItem(const SqliteQuery& query)
{
    const auto item = std::make_shared<SyncItem>(query.Text(3), query.Text(4), query.Text(5));
    item->SetId(query.Int(0));
    item->SetKind(static_cast<SyncItem::Kind>(query.Int(1)));
    item->SetAuthenticationId(query.Int(2));
    item->SetCloudItemId(query.Text(6));
    item->SetProductConfigurationId(query.Int(7));
    item->SetRootFolderId(query.Id(8));
    item->SetParentFolderId(query.Id(9));
    item->SetSourceConsumerId(query.Text(10));
    item->SetFileLinksExtractedAtFileDate(query.Date(11));
    item->SetSyncOption(static_cast<SyncItem::SyncOption>(query.Int64(12)));
    return item;
}

QList<ItemPointer> ReadAll(SqliteConnection& connection, SqliteQuery& query)
{
    QList<ItemPointer> items;
    while (query.Step()) {
        items.append(ReadItem(query));
        items.last()->SetFileLinks(ReadLinks(connection, items.last()->GetId()));
    }
    return items;
}

enum class Wanted : int
{
    Anything = 0,
    Folder = 1,
};

ItemPointer Find(SqliteConnection& connection, const QString& path, int authenticationId,
                 Wanted wanted)
{
    SqliteQuery query(connection, selectByPath);
    query.Bind(PathKey(path), authenticationId, ExactPathKey(path), static_cast<int>(wanted));
    while (query.Step()) {
        const bool isExact = query.Int(13) != 0;
        if (!isExact && AreTwins(path, query.Text(3)))
            continue;
        const ItemPointer item = ReadItem(query);
        item->SetFileLinks(ReadLinks(connection, item->GetId()));
        return item;
    }
    return nullptr;
}

/// Leaves out the items of a folder beside this one whose name differs in letter case alone.
QList<ItemPointer> WithoutThoseOfTwins(const QList<ItemPointer>& items, const QString& folder)
{
    QHash<QString, bool> isTwin;
    QList<ItemPointer> below;
    for (const ItemPointer& item : items) {
        // Folding keeps the length.
        const QString above = QDir::cleanPath(item->GetLocalPath()).left(folder.size());
        auto known = isTwin.constFind(above);
        if (known == isTwin.constEnd())
            known = isTwin.insert(above, above != folder && AreTwins(above, folder));
        if (!*known)
            below.append(item);
    }
    return below;
}

Identity ReadIdentity(SqliteQuery& query)
{
    Identity identity{query.Int(0), query.Text(1)};
    query.Run();
    return identity;
}

template <typename... More>
SqliteQuery& BindItem(SqliteQuery& query, const SyncItem& item, const QString& cloudItemId,
                      const More&... more)
{
    return query.Bind(static_cast<int>(item.GetKind()), item.GetAuthenticationId(),
                      ExactPathKey(item.GetLocalPath()), PathKey(item.GetLocalPath()),
                      item.GetLocalPath(), item.GetCloudPath(), item.GetCloudRoot(), cloudItemId,
                      item.GetProductConfigurationId(), item.GetRootFolderId(),
                      item.GetParentFolderId(), item.GetSourceConsumerId(),
                      item.GetFileLinksExtractedAtFileDate(),
                      static_cast<quint32>(item.GetSyncOption()), more...);
}

Identity Insert(SqliteConnection& connection, const SyncItem& item)
{
    QString cloudItemId = item.GetCloudItemId();
    if (cloudItemId.isEmpty())
        cloudItemId = QUuid::createUuid().toString(QUuid::WithoutBraces);
    AdoptOtherSpelling(connection, spellings, item.GetLocalPath(), item.GetAuthenticationId());
    SqliteQuery query(connection, insertItem);
    if (!BindItem(query, item, cloudItemId).Step())
        throw std::logic_error("The item was not written.");
    return ReadIdentity(query);
}

Identity Update(SqliteConnection& connection, const SyncItem& item)
{
    SqliteQuery query(connection, updateItem);
    if (!BindItem(query, item, item.GetCloudItemId(), item.GetId()).Step())
        throw std::runtime_error("There is no item with id " + std::to_string(item.GetId()) + '.');
    return ReadIdentity(query);
}

} // namespace

ItemPointer FindByPath(SqliteConnection& connection, const QString& path, int authenticationId)
{
    return Find(connection, path, authenticationId, Wanted::Anything);
}

ItemPointer FindFolderAbove(SqliteConnection& connection, const QString& path, int authenticationId)
{
    for (QString folder = ParentPath(QDir::cleanPath(path)); !folder.isEmpty();
         folder = ParentPath(folder)) {
        if (ItemPointer item = Find(connection, folder, authenticationId, Wanted::Folder))
            return item;
    }
    return nullptr;
}

ItemPointer FindFolder(SqliteConnection& connection, int id)
{
    SqliteQuery query(connection, selectFolder);
    const QList<ItemPointer> items = ReadAll(connection, query.Bind(id));
    return items.isEmpty() ? nullptr : items.first();
}

QList<ItemPointer> FindFilesBelow(SqliteConnection& connection, const SyncItem& folder,
                                  SyncItem::SyncOption option)
{
    // Every folded path below the folder, and no other, lies between "folder/" and "folder0": "0"
    // follows "/", and keys are compared by bytes.
    QString first = PathKey(folder.GetLocalPath());
    if (!first.endsWith(u'/'))
        first += u'/';
    const QString end = first.chopped(1) + u'0';
    SqliteQuery query(connection, selectFilesBelow);
    query.Bind(first, end, folder.GetAuthenticationId(), static_cast<quint32>(option));
    return WithoutThoseOfTwins(ReadAll(connection, query), QDir::cleanPath(folder.GetLocalPath()));
}

QList<ItemPointer> FindAll(SqliteConnection& connection, int authenticationId)
{
    SqliteQuery query(connection, selectAll);
    return ReadAll(connection, query.Bind(authenticationId));
}

Identity Write(SqliteConnection& connection, const SyncItem& item)
{
    const Identity identity =
        item.GetId() < 0 ? Insert(connection, item) : Update(connection, item);
    WriteLinks(connection, identity.id, item.GetFileLinks());
    return identity;
}

void WriteNew(SqliteConnection& connection, SyncItem& item)
{
    const Identity identity = Write(connection, item);
    item.SetId(identity.id);
    item.SetCloudItemId(identity.cloudItemId);
}

} // namespace Halvern::SyncServices::SqliteItems
