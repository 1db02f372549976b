// SPDX-License-Identifier: Apache-2.0

#include "LedgerRows.h"

#include "PackedLists.h"
#include "Paths.h"
#include "SqlRows.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <stdexcept>
#include <string>

namespace Halvern::Jobs::LedgerRows {

namespace {

constexpr char columns[] =
    "SELECT id, project, source, target, source_size, source_modified, source_hash, target_size, "
    "target_modified, target_hash, recorded_at, links_state, readers, rewrite_pending, moved, "
    "source_links, target_links, linked_targets, ";

/// Without a migration, which writes.
constexpr char noOrigin[] = "0 ";

constexpr char below[] =
    " FROM ledger_copies WHERE authentication_id = ? AND target_key >= ? AND target_key < ? "
    "ORDER BY target_key";

constexpr char insertOrUpdate[] =
    "INSERT INTO ledger_copies (authentication_id, target_key, source_key, project, source, "
    "target, source_size, source_modified, source_hash, target_size, target_modified, "
    "target_hash, recorded_at, links_state, readers, rewrite_pending, moved, source_links, "
    "target_links, linked_targets, origin) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) "
    "ON CONFLICT (authentication_id, target_key) DO UPDATE SET "
    "source_key = excluded.source_key, project = excluded.project, source = excluded.source, "
    "target = excluded.target, source_size = excluded.source_size, "
    "source_modified = excluded.source_modified, source_hash = excluded.source_hash, "
    "target_size = excluded.target_size, target_modified = excluded.target_modified, "
    "target_hash = excluded.target_hash, recorded_at = excluded.recorded_at, "
    "links_state = excluded.links_state, readers = excluded.readers, "
    "rewrite_pending = excluded.rewrite_pending, moved = excluded.moved, "
    "source_links = excluded.source_links, target_links = excluded.target_links, "
    "linked_targets = excluded.linked_targets, origin = excluded.origin "
    "RETURNING id";

constexpr char find[] = "SELECT id, recorded_at FROM ledger_copies WHERE authentication_id = ? "
                        "AND target_key = ?";

constexpr char loseLinks[] = "UPDATE ledger_copies SET origin = 2 WHERE authentication_id = ? AND "
                             "target_key = ? AND origin = 1";
static_assert(int(CopyOrigin::Linked) == 1 && int(CopyOrigin::LinkedNoMore) == 2);

constexpr char deleteTarget[] =
    "DELETE FROM ledger_copies WHERE authentication_id = ? AND target_key = ?";

void RunForEach(SQLite::Database& database, const char* statement, int user,
                const QStringList& targets)
{
    SQLite::Statement query(database, statement);
    for (const QString& target : targets) {
        Binder(query).Number(user).Key(target);
        query.exec();
        query.reset();
    }
}

} // namespace

QList<CopyRecord> Read(SQLite::Database& database, int user, const QString& cloudFolder,
                       bool hasOrigins)
{
    QList<CopyRecord> records;
    if (cloudFolder.isEmpty())
        return records;
    SQLite::Statement query(database,
                            std::string(columns) + (hasOrigins ? "origin" : noOrigin) + below);
    // From "folder/" to before "folder0": "0" comes next after the slash.
    const QString folder = cloudFolder.endsWith(u'/') ? cloudFolder : cloudFolder + u'/';
    QString end = PathKey(folder);
    end.back() = u'0';
    Binder(query).Number(user).Key(folder).Text(end);
    while (query.executeStep()) {
        Row row(query);
        records.append(ReadRecord(row));
    }
    return records;
}

QList<qint64> Write(SQLite::Database& database, int user, const QList<CopyRecord>& records)
{
    QList<qint64> ids;
    SQLite::Statement query(database, insertOrUpdate);
    for (const CopyRecord& record : records) {
        if (record.target.isEmpty())
            throw std::invalid_argument("A record has no target.");
        Binder binder(query);
        BindRecord(binder, user, record);
        query.executeStep();
        ids.append(query.getColumn(0).getInt64());
        query.reset();
    }
    return ids;
}

std::pair<qint64, qint64> FindTarget(SQLite::Database& database, int user, const QString& target)
{
    SQLite::Statement query(database, find);
    Binder(query).Number(user).Key(target);
    if (!query.executeStep())
        return {-1, 0};
    return {query.getColumn(0).getInt64(), query.getColumn(1).getInt64()};
}

void NoteLinkedNoMore(SQLite::Database& database, int user, const QStringList& targets)
{
    RunForEach(database, loseLinks, user, targets);
}

void Remove(SQLite::Database& database, int user, const QStringList& targets)
{
    RunForEach(database, deleteTarget, user, targets);
}

} // namespace Halvern::Jobs::LedgerRows
