// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace SQLite {
class Database;
}

namespace Halvern::Jobs::JournalSchema {

/// False when the journal has no tables yet. Throws when a newer version made them. Requires: an
/// open transaction.
bool HasTables(SQLite::Database& database);

/// Brings the tables to the current version; throws as above. Requires: an open transaction that
/// writes.
void Migrate(SQLite::Database& database);

} // namespace Halvern::Jobs::JournalSchema
