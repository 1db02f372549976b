// SPDX-License-Identifier: Apache-2.0

#include "services/SqliteConnection.h"

#include "services/SqliteSchema.h"

#include <QtCore/QElapsedTimer>

#include <sqlite3.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace Halvern::SyncServices {

namespace {

// The owner has a mutex: SQLite's own would be a second one.
constexpr int openFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;

} // namespace

SqliteConnection::SqliteConnection(const QString& file, int busyTimeout)
    : m_database(file.toStdString(), openFlags, busyTimeout)
{
    // A file that must not be written is opened for reading, without a word.
    if (sqlite3_db_readonly(m_database.getHandle(), "main") == 1)
        throw std::runtime_error("It cannot be written.");
    {
        // One state of the file: another process may be making its tables right now.
        const SqliteTransaction transaction(*this, SqliteTransaction::Read);
        SqliteSchema::RequireOwnDatabase(m_database);
    }
    m_database.exec("PRAGMA foreign_keys = ON");
    UseWriteAheadLog(busyTimeout);
    SqliteSchema::Migrate(m_database);
}

SQLite::Statement& SqliteConnection::Prepare(const char* sql)
{
    std::unique_ptr<SQLite::Statement>& statement = m_statements[sql];
    if (!statement)
        statement = std::make_unique<SQLite::Statement>(m_database, sql);
    return *statement;
}

void SqliteConnection::UseWriteAheadLog(int busyTimeout)
{
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        try {
            // With the log a commit needs no flush to be safe against a kill, and a power cut can
            // take the last moments but cannot damage the file. Where the file system offers no
            // such log, the flush stays.
            const std::string mode = m_database.execAndGet("PRAGMA journal_mode = WAL").getString();
            m_database.exec(mode == "wal" ? "PRAGMA synchronous = NORMAL"
                                          : "PRAGMA synchronous = FULL");
            return;
        } catch (const SQLite::Exception& error) {
            // Two processes that meet in this step are told so at once, whatever the time-out.
            if (error.getErrorCode() != SQLITE_BUSY || waited.elapsed() >= busyTimeout)
                throw;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
}

void SqliteQuery::BindOne(int index, const QString& value)
{
    m_statement.bind(index, value.toStdString());
}

void SqliteQuery::BindOne(int index, const QDateTime& value)
{
    if (value.isValid())
        BindOne(index, value.toMSecsSinceEpoch());
    else
        m_statement.bind(index);
}

int SqliteQuery::Int(int column) const
{
    return m_statement.getColumn(column).getInt();
}

qint64 SqliteQuery::Int64(int column) const
{
    return m_statement.getColumn(column).getInt64();
}

int SqliteQuery::Id(int column) const
{
    return m_statement.isColumnNull(column) ? -1 : Int(column);
}

QString SqliteQuery::Text(int column) const
{
    const SQLite::Column value = m_statement.getColumn(column);
    const char* text = value.getText();
    return QString::fromUtf8(text, value.getBytes());
}

QDateTime SqliteQuery::Date(int column) const
{
    if (m_statement.isColumnNull(column))
        return {};
    return QDateTime::fromMSecsSinceEpoch(Int64(column), Qt::UTC);
}

FileLink SqliteQuery::Link(int column) const
{
    return {Int(column), Text(column + 1), Text(column + 2), Text(column + 3)};
}

SqliteTransaction::SqliteTransaction(SqliteConnection& connection, Mode mode)
    : m_connection(connection)
{
    SqliteQuery(connection, mode == Write ? "BEGIN IMMEDIATE" : "BEGIN").Run();
}

SqliteTransaction::~SqliteTransaction()
{
    if (!m_open)
        return;
    try {
        SqliteQuery(m_connection, "ROLLBACK").Run();
    } catch (const std::exception&) {
        // A full disk and the like have ended the transaction already.
    }
}

void SqliteTransaction::Commit()
{
    SqliteQuery(m_connection, "COMMIT").Run();
    m_open = false;
}

} // namespace Halvern::SyncServices
