// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace SQLite {
class Database;
}

namespace Halvern::Jobs::LedgerSchema {

/// Throws when the file is not a sync database. What else is in it, and which version that has, is
/// the sync database's matter.
void RequireSyncDatabase(SQLite::Database& database);

/// False when the ledger has no tables yet. Throws when a newer version made them. Requires: an
/// open transaction.
bool HasTables(SQLite::Database& database);

/// Whether they tell why a copy was made: those of the first version do not. The same holds.
bool HasOrigins(SQLite::Database& database);

/// Brings the tables to the current version; throws as above. Requires: an open transaction that
/// writes.
void Migrate(SQLite::Database& database);

} // namespace Halvern::Jobs::LedgerSchema
