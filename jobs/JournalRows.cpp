// SPDX-License-Identifier: Apache-2.0

#include "JournalRows.h"

#include "FileStamps.h"
#include "SqlRows.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>

namespace Halvern::Jobs::JournalRows {

namespace {

constexpr char running[] =
    "SELECT id, command, target, begun, process, holder, "
    "(SELECT count(*) FROM run_files WHERE run = runs.id), "
    "(SELECT count(*) FROM run_files WHERE run = runs.id AND step = 2) "
    "FROM runs WHERE authentication_id = ? AND cloud_folder = ? AND state = 0 ORDER BY id";

constexpr char announced[] =
    "SELECT -1, project, source, target, source_size, source_modified, source_hash, target_size, "
    "target_modified, target_hash, recorded_at, links_state, readers, rewrite_pending, moved, "
    "source_links, target_links, linked_targets, origin FROM run_records "
    "WHERE run = ? AND side = 0 ORDER BY position";

constexpr char insertRun[] =
    "INSERT INTO runs (authentication_id, command, cloud_folder, target, request, state, begun, "
    "process, holder, staging) VALUES (?, ?, ?, ?, ?, 0, ?, ?, ?, ?)";

constexpr char insertFile[] =
    "INSERT OR REPLACE INTO run_files (run, position, source, target, action, moves, source_size, "
    "source_modified, old_kind, old_size, old_modified, set_aside, step, version) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";

constexpr char insertRecord[] =
    "INSERT OR REPLACE INTO run_records (run, position, side, authentication_id, target_key, "
    "source_key, project, source, target, source_size, source_modified, source_hash, target_size, "
    "target_modified, target_hash, recorded_at, links_state, readers, rewrite_pending, moved, "
    "source_links, target_links, linked_targets, origin) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";

constexpr char keep[] = "UPDATE run_files SET version = ? WHERE run = ? AND position = ?";

constexpr char done[] =
    "UPDATE run_files SET step = 2, outcome = ?, source_deleted = ?, new_size = ?, "
    "new_modified = ?, new_hash = ? WHERE run = ? AND position = ?";

enum Side
{
    After = 0,
    Before = 1
};

/// Never null.
QString Filled(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

/// As other machines and times can read it, too.
QString NameOfVersion(const QString& version)
{
    return version.isEmpty() ? QString() : QFileInfo(version).fileName();
}

QString Text(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void Run(SQLite::Statement& query)
{
    query.exec();
    query.reset();
}

/// Statements are prepared once for all files.
class RecordWriter
{
public:
    RecordWriter(SQLite::Database& database, int user, qint64 run)
        : m_query(database, insertRecord), m_user(user), m_run(run)
    {}
    void Write(qint64 position, Side side, const CopyRecord& record)
    {
        Binder binder(m_query);
        binder.Number(m_run).Number(position).Number(side);
        BindRecord(binder, m_user, record);
        Run(m_query);
    }

private:
    SQLite::Statement m_query;
    int m_user;
    qint64 m_run;
};

} // namespace

QList<InterruptedRun> ReadRunning(SQLite::Database& database, int user, const QString& cloudFolder)
{
    QList<InterruptedRun> runs;
    SQLite::Statement query(database, running);
    Binder(query).Number(user).Text(cloudFolder);
    while (query.executeStep()) {
        Row row(query);
        InterruptedRun run;
        run.id = row.Number();
        run.command = row.Text();
        run.target = row.Text();
        run.begun = QDateTime::fromMSecsSinceEpoch(row.Number() / 1'000'000, Qt::UTC);
        run.process = row.Number();
        run.holder = row.Text();
        run.planned = row.Number();
        run.done = row.Number();
        runs.append(run);
    }
    return runs;
}

QList<CopyRecord> ReadAnnounced(SQLite::Database& database, qint64 run)
{
    QList<CopyRecord> records;
    SQLite::Statement query(database, announced);
    Binder(query).Number(run);
    while (query.executeStep()) {
        Row row(query);
        records.append(ReadRecord(row));
    }
    return records;
}

qint64 InsertRun(SQLite::Database& database, int user, const RunHeader& header,
                 const QString& holder)
{
    SQLite::Statement query(database, insertRun);
    Binder(query)
        .Number(user)
        .Text(Filled(header.command))
        .Text(Filled(header.cloudFolder))
        .Text(Filled(header.target))
        .Text(Text(header.request))
        .Number(ClockNow())
        .Number(QCoreApplication::applicationPid())
        .Text(Filled(holder))
        .Text(Filled(header.staging));
    query.exec();
    return database.getLastInsertRowid();
}

void InsertFiles(SQLite::Database& database, int user, qint64 run, const QList<RunFile>& files)
{
    SQLite::Statement query(database, insertFile);
    RecordWriter records(database, user, run);
    for (const RunFile& file : files) {
        Binder(query)
            .Number(run)
            .Number(file.position)
            .Text(Filled(file.source))
            .Text(Filled(file.target))
            .Number(static_cast<int>(file.action))
            .Number(file.moves)
            .Number(file.sourceStamp.bytes)
            .Number(file.sourceStamp.modified)
            .Number(static_cast<int>(file.old.kind))
            .Number(file.old.Exists() ? qint64(file.old.size) : -1)
            .Number(file.old.modified)
            .Text(file.setAside)
            .Number(static_cast<int>(file.step))
            .Text(NameOfVersion(file.version));
        Run(query);
        if (file.before)
            records.Write(file.position, Before, *file.before);
    }
}

void NoteReady(SQLite::Database& database, int user, qint64 run, const QList<ReadyFile>& files)
{
    SQLite::Statement query(database, keep);
    RecordWriter records(database, user, run);
    for (const ReadyFile& file : files) {
        if (!file.version.isEmpty()) {
            Binder(query).Text(NameOfVersion(file.version)).Number(run).Number(file.position);
            Run(query);
        }
        records.Write(file.position, After, file.record);
    }
}

void ForgetAnnounced(SQLite::Database& database, qint64 run)
{
    SQLite::Statement forget(database, "DELETE FROM run_records WHERE run = ? AND side = 0");
    Binder(forget).Number(run);
    forget.exec();
}

void NoteDone(SQLite::Database& database, qint64 run, const QList<DoneFile>& files)
{
    SQLite::Statement query(database, done);
    for (const DoneFile& file : files) {
        Binder(query)
            .Number(file.outcome)
            .Number(file.sourceDeleted)
            .Stamp(file.stamp)
            .Number(run)
            .Number(file.position);
        Run(query);
    }
}

void NoteTakenUp(SQLite::Database& database, qint64 run, qint64 by)
{
    SQLite::Statement query(database, "UPDATE runs SET state = 4, ended = ?, taken_up_by = ? "
                                      "WHERE id = ? AND state = 0");
    Binder(query).Number(ClockNow()).Number(by).Number(run);
    query.exec();
    ForgetAnnounced(database, run);
}

void EndRun(SQLite::Database& database, qint64 run, RunState state, const QJsonObject& counts)
{
    SQLite::Statement query(database,
                            "UPDATE runs SET state = ?, ended = ?, counts = ? WHERE id = ?");
    Binder(query).Number(static_cast<int>(state)).Number(ClockNow()).Text(Text(counts)).Number(run);
    query.exec();
}

void NoteExitCode(SQLite::Database& database, qint64 run, int code)
{
    SQLite::Statement query(database, "UPDATE runs SET exit_code = ? WHERE id = ?");
    Binder(query).Number(code).Number(run);
    query.exec();
}

void Prune(SQLite::Database& database, int user, const RunLimits& limits)
{
    constexpr qint64 day = qint64(24) * 60 * 60 * 1'000'000'000;
    SQLite::Statement query(
        database, "SELECT id FROM runs WHERE authentication_id = ? AND state <> 0 AND (begun < ? "
                  "OR id NOT IN (SELECT id FROM runs WHERE authentication_id = ? "
                  "ORDER BY id DESC LIMIT ?))");
    Binder(query)
        .Number(user)
        .Number(ClockNow() - limits.days * day)
        .Number(user)
        .Number(limits.number);
    QList<qint64> runs;
    while (query.executeStep())
        runs.append(query.getColumn(0).getInt64());
    for (const char* const statement :
         {"DELETE FROM run_records WHERE run = ?", "DELETE FROM run_files WHERE run = ?",
          "DELETE FROM runs WHERE id = ?"}) {
        SQLite::Statement remove(database, statement);
        for (const qint64 run : std::as_const(runs)) {
            Binder(remove).Number(run);
            Run(remove);
        }
    }
}

} // namespace Halvern::Jobs::JournalRows
