// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Journal.h"

namespace Halvern::Jobs::JournalRows {

// The statements on the journal's tables. Each function runs in a transaction of the caller's, and
// throws.

QList<InterruptedRun> ReadRunning(SQLite::Database& database, int user, const QString& cloudFolder);
QList<CopyRecord> ReadAnnounced(SQLite::Database& database, qint64 run);

qint64 InsertRun(SQLite::Database& database, int user, const RunHeader& header,
                 const QString& holder);
void InsertFiles(SQLite::Database& database, int user, qint64 run, const QList<RunFile>& files);
void NoteReady(SQLite::Database& database, int user, qint64 run, const QList<ReadyFile>& files);
/// Those that were announced are settled, or never will be.
void ForgetAnnounced(SQLite::Database& database, qint64 run);
void NoteDone(SQLite::Database& database, qint64 run, const QList<DoneFile>& files);
void NoteTakenUp(SQLite::Database& database, qint64 run, qint64 by);
void EndRun(SQLite::Database& database, qint64 run, RunState state, const QJsonObject& counts);
void NoteExitCode(SQLite::Database& database, qint64 run, int code);
/// The oldest beyond the limits, but for those that run.
void Prune(SQLite::Database& database, int user, const RunLimits& limits);

} // namespace Halvern::Jobs::JournalRows
