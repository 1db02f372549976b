// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"
#include "PackedLists.h"
#include "Paths.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <string>

namespace Halvern::Jobs {

inline std::string TextOf(const QString& text)
{
    return TextToBytes(text).toStdString();
}

/// Binds parameters one after another.
class Binder
{
public:
    explicit Binder(SQLite::Statement& statement) : m_statement(statement) {}

    Binder& Number(qint64 value)
    {
        m_statement.bind(++m_index, static_cast<int64_t>(value));
        return *this;
    }
    Binder& Text(const QString& value)
    {
        if (value.isNull())
            m_statement.bind(++m_index);
        else
            m_statement.bind(++m_index, TextOf(value));
        return *this;
    }
    /// Never null.
    Binder& Key(const QString& path)
    {
        m_statement.bind(++m_index, TextOf(PathKey(path)));
        return *this;
    }
    Binder& Bytes(const QByteArray& value)
    {
        if (value.isNull())
            m_statement.bind(++m_index);
        else
            m_statement.bind(++m_index, value.constData(), static_cast<int>(value.size()));
        return *this;
    }
    Binder& Stamp(const FileStamp& stamp)
    {
        return Number(stamp.bytes).Number(stamp.modified).Bytes(stamp.hash);
    }

private:
    SQLite::Statement& m_statement;
    int m_index = 0;
};

/// Reads columns one after another.
class Row
{
public:
    explicit Row(SQLite::Statement& statement) : m_statement(statement) {}

    qint64 Number() { return m_statement.getColumn(m_index++).getInt64(); }
    bool Flag() { return Number() != 0; }
    /// Null for null. The bytes are there until the next row.
    QByteArrayView Bytes()
    {
        const SQLite::Column column = m_statement.getColumn(m_index++);
        if (column.isNull())
            return {};
        const auto* const bytes = static_cast<const char*>(column.getBlob());
        return {bytes ? bytes : "", column.getBytes()};
    }
    QString Text()
    {
        const QByteArrayView bytes = Bytes();
        return bytes.isNull() ? QString() : TextFromBytes(bytes);
    }
    FileStamp Stamp()
    {
        FileStamp stamp;
        stamp.bytes = Number();
        stamp.modified = Number();
        stamp.hash = Bytes().toByteArray();
        return stamp;
    }
    /// What is not known counts as not read, and is read again.
    LinksState State()
    {
        switch (const auto state = static_cast<LinksState>(Number())) {
        case LinksState::Read:
        case LinksState::UnknownFormat:
        case LinksState::Failed:
            return state;
        }
        return LinksState::Failed;
    }
    CopyOrigin Origin()
    {
        switch (const auto origin = static_cast<CopyOrigin>(Number())) {
        case CopyOrigin::Selected:
        case CopyOrigin::Linked:
        case CopyOrigin::LinkedNoMore:
            return origin;
        }
        return CopyOrigin::Selected;
    }

private:
    SQLite::Statement& m_statement;
    int m_index = 0;
};

/// The columns of a record from the id to the origin, in the order of the ledger's query.
CopyRecord ReadRecord(Row& row);
/// Those that the ledger's insertion names.
void BindRecord(Binder& binder, int user, const CopyRecord& record);

} // namespace Halvern::Jobs
