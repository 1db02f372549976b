// SPDX-License-Identifier: Apache-2.0

#include "JournalSchema.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <iterator>
#include <stdexcept>
#include <string>

namespace Halvern::Jobs::JournalSchema {

namespace {

/// Entry i leads from version i to version i + 1. DO NOT CHANGE an entry that was ever released:
/// add one. The journal counts its own versions, as the ledger does.
///
/// Times are nanoseconds since 1970; a size that is not known, or of what is not there, is -1. The
/// numbers of states, actions and steps are those of Journal.h. `version` is the name of the copy
/// in the base store that holds what was replaced or pruned. run_records holds records of copies as
/// the ledger has them: side 0 as it will be once the file is in place, gone when the ledger has
/// it; side 1 as it was.
const char* const migrations[] = {
    R"sql(
CREATE TABLE journal_version (
    version INTEGER NOT NULL
);
INSERT INTO journal_version VALUES (0);

CREATE TABLE runs (
    id                 INTEGER PRIMARY KEY AUTOINCREMENT,
    authentication_id  INTEGER NOT NULL,
    command            TEXT    NOT NULL,
    cloud_folder       TEXT    NOT NULL,
    target             TEXT    NOT NULL,
    request            TEXT    NOT NULL, -- JSON
    state              INTEGER NOT NULL,
    begun              INTEGER NOT NULL,
    ended              INTEGER,
    process            INTEGER NOT NULL,
    holder             TEXT    NOT NULL, -- name of the file that the process holds while it runs
    staging            TEXT    NOT NULL,
    counts             TEXT,             -- JSON
    exit_code          INTEGER,
    taken_up_by        INTEGER
);

CREATE TABLE run_files (
    run              INTEGER NOT NULL,
    position         INTEGER NOT NULL,
    source           TEXT    NOT NULL,
    target           TEXT    NOT NULL,
    action           INTEGER NOT NULL,
    moves            INTEGER NOT NULL,
    source_size      INTEGER NOT NULL,
    source_modified  INTEGER NOT NULL,
    old_kind         INTEGER NOT NULL,
    old_size         INTEGER NOT NULL,
    old_modified     INTEGER NOT NULL,
    set_aside        TEXT,
    step             INTEGER NOT NULL,
    version          TEXT,
    new_size         INTEGER,
    new_modified     INTEGER,
    new_hash         BLOB,
    outcome          INTEGER,
    source_deleted   INTEGER NOT NULL DEFAULT 0,
    PRIMARY KEY (run, position)
) WITHOUT ROWID;

CREATE TABLE run_records (
    run                INTEGER NOT NULL,
    position           INTEGER NOT NULL,
    side               INTEGER NOT NULL,
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
    origin             INTEGER NOT NULL,
    PRIMARY KEY (run, position, side)
) WITHOUT ROWID;
)sql",
};

constexpr int currentVersion = static_cast<int>(std::size(migrations));

/// 0 without tables.
int ReadVersion(SQLite::Database& database)
{
    if (!database.tableExists("journal_version"))
        return 0;
    const int version = database.execAndGet("SELECT max(version) FROM journal_version").getInt();
    if (version < 1)
        throw std::runtime_error("The version of the journal is damaged.");
    if (version > currentVersion)
        throw std::runtime_error("Its journal was written by a newer version (version " +
                                 std::to_string(version) + ", this one knows " +
                                 std::to_string(currentVersion) + ").");
    return version;
}

} // namespace

bool HasTables(SQLite::Database& database)
{
    return ReadVersion(database) > 0;
}

void Migrate(SQLite::Database& database)
{
    const int existing = ReadVersion(database);
    if (existing == currentVersion)
        return;
    for (int version = existing; version < currentVersion; ++version)
        database.exec(migrations[version]);
    database.exec("UPDATE journal_version SET version = " + std::to_string(currentVersion));
}

} // namespace Halvern::Jobs::JournalSchema
