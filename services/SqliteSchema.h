// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace SQLite {
class Database;
}

namespace Halvern::SyncServices::SqliteSchema {

/// Throws when the file is a newer version's or another program's; changes nothing. Requires: an
/// open transaction.
void RequireOwnDatabase(SQLite::Database& database);

/// Brings the tables to the current version, in one transaction.
void Migrate(SQLite::Database& database);

} // namespace Halvern::SyncServices::SqliteSchema
