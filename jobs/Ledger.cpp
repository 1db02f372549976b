// SPDX-License-Identifier: Apache-2.0

#include "Ledger.h"

#include "FileStamps.h"
#include "LedgerRows.h"
#include "LedgerSchema.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QtCore/QFile>

#include <sqlite3.h>

#include <exception>
#include <stdexcept>
#include <utility>

namespace Halvern::Jobs {

namespace {

const QString inMemory = QStringLiteral(":memory:");

/// One that only reads must not move what others wrote from the log into the file either, which
/// SQLite does when the last connection ends. A log that is not there yet will be empty, and has to
/// go with the connection that made it.
void LeaveUnchanged(SQLite::Database& database, bool hadLog)
{
    database.exec("PRAGMA query_only = ON");
    if (hadLog)
        sqlite3_db_config(database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

/// A commit is on the disk, and with it all that the sync database wrote to the same log before.
void PrepareToWrite(SQLite::Database& database)
{
    // A file that must not be written is opened for reading, without a word.
    if (sqlite3_db_readonly(database.getHandle(), "main") == 1)
        throw std::runtime_error("It cannot be written.");
    database.exec("PRAGMA synchronous = FULL");
}

} // namespace

Ledger::Ledger(const QString& databaseFile, int user, bool readOnly)
    : m_file(databaseFile), m_user(user), m_readOnly(readOnly)
{}

Ledger::~Ledger() = default;

std::unique_ptr<Ledger> Ledger::Open(const QString& databaseFile, int user, int busyTimeout,
                                     bool readOnly)
{
    std::unique_ptr<Ledger> ledger(new Ledger(databaseFile, user, readOnly));
    try {
        ledger->OpenDatabase(busyTimeout);
    } catch (const std::exception& failure) {
        ledger->m_database.reset();
        ledger->Remember("Opening the records of copies", failure.what());
    }
    return ledger;
}

void Ledger::OpenDatabase(int busyTimeout)
{
    if (m_file == inMemory) {
        m_database = std::make_unique<SQLite::Database>(m_file.toStdString(),
                                                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        return;
    }
    const bool hadLog = QFile::exists(m_file + QStringLiteral("-wal"));
    m_database = std::make_unique<SQLite::Database>(
        m_file.toStdString(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, busyTimeout);
    if (m_readOnly)
        LeaveUnchanged(*m_database, hadLog);
    LedgerSchema::RequireSyncDatabase(*m_database);
    if (!m_readOnly)
        PrepareToWrite(*m_database);
    const SQLite::Transaction transaction(*m_database);
    LedgerSchema::HasTables(*m_database);
}

void Ledger::DoNotFlush()
{
    if (!m_database)
        return;
    try {
        if (m_database->execAndGet("PRAGMA journal_mode").getString() == "wal")
            m_database->exec("PRAGMA synchronous = NORMAL");
    } catch (const std::exception& failure) {
        Remember("Opening the records of copies", failure.what());
    }
}

QString Ledger::Error() const
{
    return m_error;
}

QList<CopyRecord> Ledger::ReadAll(const QString& cloudFolder)
{
    QList<CopyRecord> records;
    // Version and records are of one moment.
    if (!Look("Reading the records of copies", [&](SQLite::Database& database) {
            if (LedgerSchema::HasTables(database))
                records = LedgerRows::Read(database, m_user, cloudFolder,
                                           LedgerSchema::HasOrigins(database));
        }))
        return {};
    m_hasRead = true;
    for (const CopyRecord& record : std::as_const(records))
        m_seen.insert(record.id, record.recordedAt);
    return records;
}

bool Ledger::Write(QList<CopyRecord>& records)
{
    QList<qint64> ids;
    if (!Change("Writing the records of copies",
                [&](SQLite::Database& database) { ids = WriteIn(database, records); }))
        return false;
    for (qsizetype i = 0; i < ids.size(); ++i)
        if (ids[i] >= 0)
            records[i].id = ids[i];
    return true;
}

QList<qint64> Ledger::WriteIn(SQLite::Database& database, const QList<CopyRecord>& records)
{
    QList<CopyRecord> own;
    QList<bool> isOwn;
    for (const CopyRecord& record : records) {
        isOwn.append(MayWrite(database, record));
        if (isOwn.last())
            own.append(record);
    }
    const QList<qint64> written = LedgerRows::Write(database, m_user, own);
    QList<qint64> ids;
    qsizetype next = 0;
    for (const bool is : std::as_const(isOwn))
        ids.append(is ? written.at(next++) : -1);
    for (qsizetype i = 0; i < own.size(); ++i)
        m_seen.insert(written.at(i), own.at(i).recordedAt);
    return ids;
}

/// Writers come one after the other: what the disk holds now is what the last one that placed
/// something there has recorded, or will.
bool Ledger::MayWrite(SQLite::Database& database, const CopyRecord& record) const
{
    if (!m_hasRead)
        return true;
    const auto [id, recordedAt] = LedgerRows::FindTarget(database, m_user, record.target);
    if (id < 0 || m_seen.value(id, -1) == recordedAt)
        return true;
    const FileStamp now = StampOf(record.target, false);
    return now.bytes == record.targetStamp.bytes && now.modified == record.targetStamp.modified;
}

bool Ledger::NoteLinkedNoMore(const QStringList& targets)
{
    return Change("Writing the records of copies", [&](SQLite::Database& database) {
        LedgerRows::NoteLinkedNoMore(database, m_user, targets);
    });
}

bool Ledger::Remove(const QStringList& targets)
{
    return Change("Removing records of copies", [&](SQLite::Database& database) {
        LedgerRows::Remove(database, m_user, targets);
    });
}

template <typename Result, typename Task>
Result Ledger::Run(const char* name, Result failed, Task operation)
{
    if (!m_database)
        return failed;
    try {
        return operation(*m_database);
    } catch (const std::exception& failure) {
        Remember(name, failure.what());
    }
    return failed;
}

bool Ledger::Look(const char* name, const Operation& operation)
{
    return Run(name, false, [&](SQLite::Database& database) {
        const SQLite::Transaction transaction(database);
        operation(database);
        return true;
    });
}

bool Ledger::Change(const char* name, const Operation& operation)
{
    return Run(name, false, [&](SQLite::Database& database) {
        if (m_readOnly)
            throw std::logic_error("They were opened to be read only.");
        // Waits for other writers at once, not half way through.
        SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
        LedgerSchema::Migrate(database);
        operation(database);
        transaction.commit();
        return true;
    });
}

void Ledger::Remember(const char* operation, const char* reason)
{
    m_error = QStringLiteral("%1 failed on sync database %2: %3")
                  .arg(QString::fromLatin1(operation), m_file, QString::fromUtf8(reason));
}

} // namespace Halvern::Jobs
