// SPDX-License-Identifier: Apache-2.0

#include "services/SqliteSchema.h"

#include "services/Paths.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <sqlite3.h>

#include <iterator>
#include <stdexcept>
#include <string>

namespace Halvern::SyncServices::SqliteSchema {

namespace {

/// Entry i leads from version i to version i + 1. DO NOT CHANGE an entry that was ever released:
/// add one.
///
/// Version 1: path keys are cleaned, case-folded paths. Since version 2 a key is what tells files
/// from each other on the system (ExactPathKey), and the folded path stands beside it; a process of
/// version 1 that still has the file open does not know that, and cannot add rows. Dates are
/// milliseconds since 1970 in UTC, null when unknown. Ids are never used twice: links of other
/// items remember them.
const char* const migrations[] = {
    R"sql(
CREATE TABLE items (
    id                        INTEGER PRIMARY KEY AUTOINCREMENT,
    kind                      INTEGER NOT NULL,
    authentication_id         INTEGER NOT NULL,
    path_key                  TEXT    NOT NULL,
    local_path                TEXT    NOT NULL,
    cloud_path                TEXT    NOT NULL,
    cloud_root                TEXT    NOT NULL,
    cloud_item_id             TEXT    NOT NULL,
    product_configuration_id  INTEGER NOT NULL,
    root_folder_id            INTEGER,
    parent_folder_id          INTEGER REFERENCES items (id) ON DELETE CASCADE,
    source_consumer_id        TEXT    NOT NULL,
    links_extracted_at        INTEGER,
    sync_option               INTEGER NOT NULL,
    UNIQUE (path_key, authentication_id)
);
CREATE INDEX items_by_parent ON items (parent_folder_id);

CREATE TABLE item_links (
    item_id         INTEGER NOT NULL REFERENCES items (id) ON DELETE CASCADE,
    position        INTEGER NOT NULL,
    linked_item_id  INTEGER NOT NULL,
    reference_id    TEXT    NOT NULL,
    path            TEXT    NOT NULL,
    cloud_item_id   TEXT    NOT NULL,
    PRIMARY KEY (item_id, position)
) WITHOUT ROWID;

CREATE TABLE copy_history (
    id                         INTEGER PRIMARY KEY,
    authentication_id          INTEGER NOT NULL,
    source_key                 TEXT    NOT NULL,
    source_path                TEXT    NOT NULL,
    target_path                TEXT    NOT NULL,
    source_modified            INTEGER,
    source_size                INTEGER NOT NULL,
    target_modified            INTEGER,
    target_size                INTEGER NOT NULL,
    copy_date                  INTEGER,
    source_links_extracted_at  INTEGER,
    target_links_extracted_at  INTEGER,
    UNIQUE (authentication_id, source_key)
);

CREATE TABLE copy_history_links (
    history_id      INTEGER NOT NULL REFERENCES copy_history (id) ON DELETE CASCADE,
    side            INTEGER NOT NULL, -- 0 source, 1 target
    position        INTEGER NOT NULL,
    linked_item_id  INTEGER NOT NULL,
    reference_id    TEXT    NOT NULL,
    path            TEXT    NOT NULL,
    cloud_item_id   TEXT    NOT NULL,
    PRIMARY KEY (history_id, side, position)
) WITHOUT ROWID;

PRAGMA application_id = 1668248179;
)sql",
    R"sql(
ALTER TABLE items ADD COLUMN folded_key TEXT;
UPDATE items SET folded_key = path_key, path_key = exact_path_key(local_path);
CREATE INDEX items_by_folded_key ON items (folded_key);
CREATE TRIGGER items_of_version_1 BEFORE INSERT ON items WHEN NEW.folded_key IS NULL
BEGIN
    SELECT raise(ABORT, 'A newer version has taken over the file.');
END;

ALTER TABLE copy_history ADD COLUMN folded_key TEXT;
UPDATE copy_history SET folded_key = source_key, source_key = exact_path_key(source_path);
CREATE INDEX copy_history_by_folded_key ON copy_history (folded_key);
CREATE TRIGGER copy_history_of_version_1 BEFORE INSERT ON copy_history
WHEN NEW.folded_key IS NULL
BEGIN
    SELECT raise(ABORT, 'A newer version has taken over the file.');
END;
)sql",
};

constexpr int currentVersion = static_cast<int>(std::size(migrations));

/// "cors" in four bytes. DO NOT CHANGE: the files of users hold it.
constexpr int applicationId = 0x636F7273;
static_assert(applicationId == 1668248179);

int ReadNumber(SQLite::Database& database, const char* query)
{
    return database.execAndGet(query).getInt();
}

int ReadVersion(SQLite::Database& database)
{
    return ReadNumber(database, "PRAGMA user_version");
}

/// The SQL function exact_path_key(path).
void ExactPathKeyInSql(sqlite3_context* context, int, sqlite3_value** arguments)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(arguments[0]));
    const std::string key =
        ExactPathKey(QString::fromUtf8(text, sqlite3_value_bytes(arguments[0]))).toStdString();
    sqlite3_result_text(context, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
}

} // namespace

void RequireOwnDatabase(SQLite::Database& database)
{
    const int owner = ReadNumber(database, "PRAGMA application_id");
    const bool isEmpty = ReadNumber(database, "SELECT count(*) FROM sqlite_master") == 0;
    const int version = ReadVersion(database);
    if (owner != applicationId && !(owner == 0 && version == 0 && isEmpty))
        throw std::runtime_error("It is the database of another program.");
    if (version > currentVersion)
        throw std::runtime_error("It was written by a newer version (database version " +
                                 std::to_string(version) + ", this one knows " +
                                 std::to_string(currentVersion) + ").");
}

void Migrate(SQLite::Database& database)
{
    if (ReadVersion(database) == currentVersion)
        return;
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    // Another process may have been faster, and may be newer.
    RequireOwnDatabase(database);
    database.createFunction("exact_path_key", 1, true, nullptr, ExactPathKeyInSql);
    for (int version = ReadVersion(database); version < currentVersion; ++version)
        database.exec(migrations[version]);
    database.exec("PRAGMA user_version = " + std::to_string(currentVersion));
    transaction.commit();
}

} // namespace Halvern::SyncServices::SqliteSchema
