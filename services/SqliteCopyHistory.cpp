// SPDX-License-Identifier: Apache-2.0

#include "services/SqliteCopyHistory.h"

#include "services/Paths.h"
#include "services/Spellings.h"
#include "services/SqliteConnection.h"

#include <QtCore/QHash>

#include <stdexcept>

namespace Halvern::SyncServices::SqliteCopyHistory {

namespace {

/// DO NOT CHANGE THESE VALUES: they are stored in the database.
enum Side
{
    SourceSide = 0,
    TargetSide = 1,
};

constexpr char selectHistory[] =
    "SELECT id, source_path, target_path, source_modified, source_size, target_modified, "
    "target_size, copy_date, source_links_extracted_at, target_links_extracted_at "
    "FROM copy_history WHERE authentication_id = ? ORDER BY id";
constexpr char selectLinks[] =
    "SELECT link.history_id, link.side, link.linked_item_id, link.reference_id, link.path, "
    "link.cloud_item_id FROM copy_history AS entry "
    "JOIN copy_history_links AS link ON link.history_id = entry.id "
    "WHERE entry.authentication_id = ? ORDER BY link.history_id, link.side, link.position";
constexpr char writeEntry[] = R"sql(
INSERT INTO copy_history (authentication_id, source_key, folded_key, source_path, target_path,
                          source_modified, source_size, target_modified, target_size, copy_date,
                          source_links_extracted_at, target_links_extracted_at)
VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)
ON CONFLICT (authentication_id, source_key) DO UPDATE SET
    source_path = excluded.source_path, target_path = excluded.target_path,
    source_modified = excluded.source_modified, source_size = excluded.source_size,
    target_modified = excluded.target_modified, target_size = excluded.target_size,
    copy_date = excluded.copy_date,
    source_links_extracted_at = excluded.source_links_extracted_at,
    target_links_extracted_at = excluded.target_links_extracted_at
RETURNING id)sql";
constexpr SpellingQueries spellings = {
    "SELECT id, source_key, source_path FROM copy_history "
    "WHERE folded_key = ?1 AND authentication_id = ?2 ORDER BY source_key <> ?3, id",
    "UPDATE copy_history SET source_key = ?1 WHERE id = ?2"};
constexpr char deleteLinks[] = "DELETE FROM copy_history_links WHERE history_id = ?";
constexpr char insertLink[] =
    "INSERT INTO copy_history_links (history_id, side, position, linked_item_id, reference_id, "
    "path, cloud_item_id) VALUES (?, ?, ?, ?, ?, ?, ?)";
constexpr char deleteHistory[] = "DELETE FROM copy_history WHERE authentication_id = ?";

std::shared_ptr<FileMapping> ReadEntry(const SqliteQuery& query, int authenticationId)
{
    const auto mapping =
        std::make_shared<FileMapping>(query.Text(1), query.Text(2), authenticationId);
    mapping->SetSourceFileProperties(query.Date(3), query.Int64(4));
    mapping->SetTargetFileProperties(query.Date(5), query.Int64(6));
    mapping->SetCopyDate(query.Date(7));
    mapping->SetSourceFileLinksExtractedAtFileDate(query.Date(8));
    mapping->SetTargetFileLinksExtractedAtFileDate(query.Date(9));
    return mapping;
}

struct Links
{
    QList<FileLink> source;
    QList<FileLink> target;
};

QHash<qint64, Links> ReadLinks(SqliteConnection& connection, int authenticationId)
{
    QHash<qint64, Links> links;
    SqliteQuery query(connection, selectLinks);
    for (query.Bind(authenticationId); query.Step();) {
        Links& entry = links[query.Int64(0)];
        (query.Int(1) == SourceSide ? entry.source : entry.target).append(query.Link(2));
    }
    return links;
}

void WriteLinks(SqliteConnection& connection, qint64 entry, Side side, const QList<FileLink>& links)
{
    for (int i = 0; i < links.size(); ++i) {
        const FileLink& link = links.at(i);
        SqliteQuery(connection, insertLink)
            .Bind(entry, static_cast<int>(side), i, link.ItemId, link.RefId, link.Path,
                  link.CloudItemId)
            .Run();
    }
}

qint64 WriteEntry(SqliteConnection& connection, const FileMapping& mapping)
{
    const QString source = mapping.GetSourceFile();
    AdoptOtherSpelling(connection, spellings, source, mapping.GetAuthenticationId());
    SqliteQuery query(connection, writeEntry);
    query.Bind(mapping.GetAuthenticationId(), ExactPathKey(source), PathKey(source), source,
               mapping.GetTargetFile(), mapping.GetSourceFileLastModified(),
               mapping.GetSourceFileSize(), mapping.GetTargetFileLastModified(),
               mapping.GetTargetFileSize(), mapping.GetCopyDate(),
               mapping.GetSourceFileLinksExtractedAtFileDate(),
               mapping.GetTargetFileLinksExtractedAtFileDate());
    if (!query.Step())
        throw std::logic_error("The entry was not written.");
    return query.Int64(0);
}

} // namespace

QList<std::shared_ptr<FileMapping>> Read(SqliteConnection& connection, int authenticationId)
{
    const QHash<qint64, Links> links = ReadLinks(connection, authenticationId);
    QList<std::shared_ptr<FileMapping>> history;
    SqliteQuery query(connection, selectHistory);
    for (query.Bind(authenticationId); query.Step();) {
        history.append(ReadEntry(query, authenticationId));
        const auto found = links.constFind(query.Int64(0));
        if (found == links.constEnd())
            continue;
        history.last()->SetSourceFileLinks(found->source);
        history.last()->SetTargetFileLinks(found->target);
    }
    return history;
}

void Write(SqliteConnection& connection, const FileMapping& mapping)
{
    const qint64 entry = WriteEntry(connection, mapping);
    SqliteQuery(connection, deleteLinks).Bind(entry).Run();
    WriteLinks(connection, entry, SourceSide, mapping.GetSourceFileLinks());
    WriteLinks(connection, entry, TargetSide, mapping.GetTargetFileLinks());
}

void DeleteAll(SqliteConnection& connection, int authenticationId)
{
    SqliteQuery(connection, deleteHistory).Bind(authenticationId).Run();
}

} // namespace Halvern::SyncServices::SqliteCopyHistory
