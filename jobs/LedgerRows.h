// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"

#include <utility>

namespace Halvern::Jobs::LedgerRows {

// The statements on the ledger's tables. Each function runs in a transaction of the caller's, and
// throws.

QList<CopyRecord> Read(SQLite::Database& database, int user, const QString& cloudFolder,
                       bool hasOrigins);
/// The id and recordedAt of the record with this target; -1 without one.
std::pair<qint64, qint64> FindTarget(SQLite::Database& database, int user, const QString& target);
/// The ids, in the order of the records.
QList<qint64> Write(SQLite::Database& database, int user, const QList<CopyRecord>& records);
void NoteLinkedNoMore(SQLite::Database& database, int user, const QStringList& targets);
void Remove(SQLite::Database& database, int user, const QStringList& targets);

} // namespace Halvern::Jobs::LedgerRows
