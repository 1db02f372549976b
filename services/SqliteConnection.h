// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/FileLink.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <memory>
#include <unordered_map>

namespace Halvern::SyncServices {

/// An open database file with its prepared statements, for one thread at a time. Failures are
/// exceptions here; SqliteSyncDatabase turns them into results.
class SqliteConnection
{
public:
    /// Opens a file, making it and its tables when missing. `busyTimeout` in milliseconds.
    SqliteConnection(const QString& file, int busyTimeout);

    /// The prepared statement of a query. Requires: `sql` is a constant; its address is the key.
    SQLite::Statement& Prepare(const char* sql);

private:
    void UseWriteAheadLog(int busyTimeout);

    SQLite::Database m_database;
    std::unordered_map<const char*, std::unique_ptr<SQLite::Statement>> m_statements;
};

/// One run of a kept statement: bind all parameters, step, read. Not reset, a statement would hold
/// its locks.
class SqliteQuery
{
public:
    SqliteQuery(SqliteConnection& connection, const char* sql)
        : m_statement(connection.Prepare(sql))
    {}
    ~SqliteQuery() { m_statement.tryReset(); }
    SqliteQuery(const SqliteQuery&) = delete;
    SqliteQuery& operator=(const SqliteQuery&) = delete;

    /// Binds the parameters from the first on.
    template <typename... Values>
    SqliteQuery& Bind(const Values&... values)
    {
        int index = 0;
        (BindOne(++index, values), ...);
        return *this;
    }
    /// False when there is no further row.
    bool Step() { return m_statement.executeStep(); }
    void Run()
    {
        while (Step()) {
        }
    }

    int Int(int column) const;
    qint64 Int64(int column) const;
    /// -1 for null.
    int Id(int column) const;
    QString Text(int column) const;
    /// Invalid for null.
    QDateTime Date(int column) const;
    /// Four columns: item id, reference id, path, cloud item id.
    FileLink Link(int column) const;

private:
    void BindOne(int index, int value) { m_statement.bind(index, static_cast<int32_t>(value)); }
    void BindOne(int index, quint32 value) { m_statement.bind(index, value); }
    void BindOne(int index, qint64 value) { m_statement.bind(index, static_cast<int64_t>(value)); }
    void BindOne(int index, const QString& value);
    void BindOne(int index, const QDateTime& value);

    SQLite::Statement& m_statement;
};

/// A transaction that is undone at the end of the scope unless it was committed.
class SqliteTransaction
{
public:
    enum Mode
    {
        /// Several queries see one state.
        Read,
        /// Waits for other writers at once, not half way through.
        Write,
    };

    SqliteTransaction(SqliteConnection& connection, Mode mode);
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;

    void Commit();

private:
    SqliteConnection& m_connection;
    bool m_open = true;
};

} // namespace Halvern::SyncServices
