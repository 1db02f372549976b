// SPDX-License-Identifier: Apache-2.0

#include "LedgerRows.h"

#include "PackedLists.h"
#include "Paths.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <stdexcept>
#include <string>

namespace Halvern::Jobs::LedgerRows {

namespace {

constexpr char columns[] =
    "SELECT id, project, source, target, source_size, source_modified, source_hash, target_size, "
    "target_modified, target_hash, recorded_at, links_state, readers, rewrite_pending, moved, "
    "source_links, target_links, linked_targets, ";

/// Without a migration, which writes.
constexpr char noOrigin[] = "0 ";

constexpr char below[] =
    " FROM ledger_copies WHERE authentication_id = ? AND target_key >= ? AND target_key < ? "
    "ORDER BY target_key";

constexpr char insertOrUpdate[] =
    "INSERT INTO ledger_copies (authentication_id, target_key, source_key, project, source, "
    "target, source_size, source_modified, source_hash, target_size, target_modified, "
    "target_hash, recorded_at, links_state, readers, rewrite_pending, moved, source_links, "
    "target_links, linked_targets, origin) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) "
    "ON CONFLICT (authentication_id, target_key) DO UPDATE SET "
    "source_key = excluded.source_key, project = excluded.project, source = excluded.source, "
    "target = excluded.target, source_size = excluded.source_size, "
    "source_modified = excluded.source_modified, source_hash = excluded.source_hash, "
    "target_size = excluded.target_size, target_modified = excluded.target_modified, "
    "target_hash = excluded.target_hash, recorded_at = excluded.recorded_at, "
    "links_state = excluded.links_state, readers = excluded.readers, "
    "rewrite_pending = excluded.rewrite_pending, moved = excluded.moved, "
    "source_links = excluded.source_links, target_links = excluded.target_links, "
    "linked_targets = excluded.linked_targets, origin = excluded.origin "
    "RETURNING id";

constexpr char loseLinks[] = "UPDATE ledger_copies SET origin = 2 WHERE authentication_id = ? AND "
                             "target_key = ? AND origin = 1";
static_assert(int(CopyOrigin::Linked) == 1 && int(CopyOrigin::LinkedNoMore) == 2);

constexpr char deleteTarget[] =
    "DELETE FROM ledger_copies WHERE authentication_id = ? AND target_key = ?";

std::string TextOf(const QString& text)
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

CopyRecord ReadRecord(Row row)
{
    CopyRecord record;
    record.id = row.Number();
    record.project = row.Text();
    record.source = row.Text();
    record.target = row.Text();
    record.sourceStamp = row.Stamp();
    record.targetStamp = row.Stamp();
    record.recordedAt = row.Number();
    record.linksState = row.State();
    record.readers = row.Text();
    record.isRewritePending = row.Flag();
    record.isMoved = row.Flag();
    record.sourceLinks = UnpackLinks(row.Bytes());
    record.targetLinks = UnpackLinks(row.Bytes());
    record.linkedTargets = UnpackTexts(row.Bytes());
    record.origin = row.Origin();
    return record;
}

void BindRecord(Binder binder, int user, const CopyRecord& record)
{
    binder.Number(user)
        .Key(record.target)
        .Key(record.source)
        .Text(record.project)
        .Text(record.source)
        .Text(record.target)
        .Stamp(record.sourceStamp)
        .Stamp(record.targetStamp)
        .Number(record.recordedAt)
        .Number(static_cast<int>(record.linksState))
        .Text(record.readers)
        .Number(record.isRewritePending)
        .Number(record.isMoved)
        .Bytes(PackLinks(record.sourceLinks))
        .Bytes(PackLinks(record.targetLinks))
        .Bytes(PackTexts(record.linkedTargets))
        .Number(static_cast<int>(record.origin));
}

void RunForEach(SQLite::Database& database, const char* statement, int user,
                const QStringList& targets)
{
    SQLite::Statement query(database, statement);
    for (const QString& target : targets) {
        Binder(query).Number(user).Key(target);
        query.exec();
        query.reset();
    }
}

} // namespace

QList<CopyRecord> Read(SQLite::Database& database, int user, const QString& cloudFolder,
                       bool hasOrigins)
{
    QList<CopyRecord> records;
    if (cloudFolder.isEmpty())
        return records;
    SQLite::Statement query(database,
                            std::string(columns) + (hasOrigins ? "origin" : noOrigin) + below);
    // From "folder/" to before "folder0": "0" comes next after the slash.
    const QString folder = cloudFolder.endsWith(u'/') ? cloudFolder : cloudFolder + u'/';
    QString end = PathKey(folder);
    end.back() = u'0';
    Binder(query).Number(user).Key(folder).Text(end);
    while (query.executeStep())
        records.append(ReadRecord(Row(query)));
    return records;
}

QList<qint64> Write(SQLite::Database& database, int user, const QList<CopyRecord>& records)
{
    QList<qint64> ids;
    SQLite::Statement query(database, insertOrUpdate);
    for (const CopyRecord& record : records) {
        if (record.target.isEmpty())
            throw std::invalid_argument("A record has no target.");
        BindRecord(Binder(query), user, record);
        query.executeStep();
        ids.append(query.getColumn(0).getInt64());
        query.reset();
    }
    return ids;
}

void NoteLinkedNoMore(SQLite::Database& database, int user, const QStringList& targets)
{
    RunForEach(database, loseLinks, user, targets);
}

void Remove(SQLite::Database& database, int user, const QStringList& targets)
{
    RunForEach(database, deleteTarget, user, targets);
}

} // namespace Halvern::Jobs::LedgerRows
