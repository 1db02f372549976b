// SPDX-License-Identifier: Apache-2.0

#include "LedgerSchema.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <iterator>
#include <stdexcept>
#include <string>

namespace Halvern::Jobs::LedgerSchema {

namespace {

/// Entry i leads from version i to version i + 1. DO NOT CHANGE an entry that was ever released:
/// add one. The sync database counts its own versions (user_version): either can get a new one
/// without the other.
///
/// Keys tell files from each other as the system does (Base::SamePathKey). Times are nanoseconds
/// since 1970; a size that is not known is -1. Texts and hashes are null when the record's is.
/// Lists are packed as PackedLists.h says: with a table of their rows, 100,000 records with five
/// links on each side took three to six times as long to write, and half as long again to read.
const char* const migrations[] = {
    R"sql(
CREATE TABLE ledger_version (
    version INTEGER NOT NULL
);
INSERT INTO ledger_version VALUES (0);

CREATE TABLE ledger_copies (
    id                 INTEGER PRIMARY KEY,
    authentication_id  INTEGER NOT NULL,
    target_key         TEXT    NOT NULL,
    source_key         TEXT    NOT NULL,
    project            TEXT,
    source             TEXT,
    target             TEXT,
    source_size        INTEGER NOT NULL,
    source_modified    INTEGER NOT NULL,
    source_hash        BLOB,
    target_size        INTEGER NOT NULL,
    target_modified    INTEGER NOT NULL,
    target_hash        BLOB,
    recorded_at        INTEGER NOT NULL,
    links_state        INTEGER NOT NULL,
    readers            TEXT,
    rewrite_pending    INTEGER NOT NULL,
    moved              INTEGER NOT NULL,
    source_links       BLOB    NOT NULL,
    target_links       BLOB    NOT NULL,
    linked_targets     BLOB    NOT NULL,
    UNIQUE (authentication_id, target_key)
);
CREATE INDEX ledger_copies_by_source ON ledger_copies (authentication_id, source_key);
)sql",
    "ALTER TABLE ledger_copies ADD COLUMN origin INTEGER NOT NULL DEFAULT 0;",
};

constexpr int currentVersion = static_cast<int>(std::size(migrations));

/// "cors" in four bytes, which the sync database writes. DO NOT CHANGE.
constexpr int applicationId = 0x636F7273;

int ReadNumber(SQLite::Database& database, const char* query)
{
    return database.execAndGet(query).getInt();
}

/// 0 without tables.
int ReadVersion(SQLite::Database& database)
{
    if (!database.tableExists("ledger_version"))
        return 0;
    const int version = ReadNumber(database, "SELECT max(version) FROM ledger_version");
    if (version < 1)
        throw std::runtime_error("The version of the records of copies is damaged.");
    if (version > currentVersion)
        throw std::runtime_error("Its records of copies were written by a newer version (version " +
                                 std::to_string(version) + ", this one knows " +
                                 std::to_string(currentVersion) + ").");
    return version;
}

} // namespace

void RequireSyncDatabase(SQLite::Database& database)
{
    if (ReadNumber(database, "PRAGMA application_id") != applicationId)
        throw std::runtime_error("It is not a sync database.");
}

bool HasTables(SQLite::Database& database)
{
    return ReadVersion(database) > 0;
}

bool HasOrigins(SQLite::Database& database)
{
    return ReadVersion(database) > 1;
}

void Migrate(SQLite::Database& database)
{
    const int existing = ReadVersion(database);
    if (existing == currentVersion)
        return;
    for (int version = existing; version < currentVersion; ++version)
        database.exec(migrations[version]);
    database.exec("UPDATE ledger_version SET version = " + std::to_string(currentVersion));
}

} // namespace Halvern::Jobs::LedgerSchema
