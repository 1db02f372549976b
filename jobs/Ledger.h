// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/FileLink.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace SQLite {
class Database;
}

namespace Halvern::Jobs {

/// What tells a file's content from another's, cheapest first.
struct FileStamp
{
    /// -1 when unknown.
    qint64 bytes = -1;
    /// Nanoseconds since 1970.
    qint64 modified = 0;
    /// XXH3-128; empty when it is not known.
    QByteArray hash;

    bool operator==(const FileStamp&) const = default;
};

/// DO NOT CHANGE THESE VALUES: they are stored in the database.
enum class LinksState
{
    Read = 0,
    /// No plug-in reads the format.
    UnknownFormat = 1,
    Failed = 2
};

/// Why a copy was made. DO NOT CHANGE THESE VALUES: they are stored in the database.
enum class CopyOrigin
{
    /// Its source was given, or lies in a folder that was given; or it is from a time when that was
    /// not recorded.
    Selected = 0,
    /// Only links led to its source.
    Linked = 1,
    /// The same, and a file that linked it links it no more.
    LinkedNoMore = 2
};

/// What the job library remembers of one copy that it made or adopted.
struct CopyRecord
{
    /// The row; -1 until written.
    qint64 id = -1;
    /// The target folder of the import that made the copy. Paths are absolute.
    QString project;
    QString source;
    QString target;
    /// What was copied.
    FileStamp sourceStamp;
    /// What the copy was after its links were rewritten.
    FileStamp targetStamp;
    /// When the stamps were taken, in nanoseconds since 1970 by this machine's clock.
    qint64 recordedAt = 0;
    /// The links as they stand in the source.
    QList<SyncServices::FileLink> sourceLinks;
    /// The links as they should stand in the copy.
    QList<SyncServices::FileLink> targetLinks;
    /// The files in the cloud folder that the copy's links lead to.
    QStringList linkedTargets;
    LinksState linksState = LinksState::Read;
    /// Which plug-ins would read the file, and when the folders changed in which they look for
    /// others, as text to compare.
    QString readers;
    /// The links are still to be rewritten to targetLinks.
    bool isRewritePending = false;
    /// A move has deleted the source.
    bool isMoved = false;
    CopyOrigin origin = CopyOrigin::Selected;

    bool operator==(const CopyRecord&) const = default;
};

/// The records of copies, in tables of their own in the file of the sync database, which several
/// processes may have open. One thread at a time.
///
/// Nothing here throws but for a lack of memory. A failed operation changes nothing, and Error()
/// says why it failed. No kill of the process takes back what Write or Remove did; a power cut
/// takes back the last moments at most, whole operations at a time.
class Ledger
{
public:
    /// Opens a file that the sync database has made already; it is never made here. One that is
    /// missing, broken, another program's or whose records are a newer version's gives a ledger
    /// without records, which refuses to write, and Error() tells why.
    ///
    /// `user` is the authentication id: users do not see each other's records. An operation waits
    /// up to `busyTimeout` milliseconds for another process that writes. With `readOnly` no byte of
    /// the database changes. ":memory:" begins empty and is gone with the ledger.
    static std::unique_ptr<Ledger> Open(const QString& databaseFile, int user, int busyTimeout,
                                        bool readOnly);
    ~Ledger();
    Ledger(const Ledger&) = delete;
    Ledger& operator=(const Ledger&) = delete;

    /// Why the last operation that failed did so, with the file's name; empty when none failed.
    QString Error() const;
    /// The records whose target lies below the folder, ordered by target. Letter case counts as it
    /// does for SamePathKey. Empty after a failure, too.
    QList<CopyRecord> ReadAll(const QString& cloudFolder);
    /// All or none. A record takes the place of the one with the same target; the ids are filled
    /// in.
    bool Write(QList<CopyRecord>& records);
    /// Of the copies with these targets those that only links led to get the origin LinkedNoMore,
    /// all or none.
    bool NoteLinkedNoMore(const QStringList& targets);
    /// Forgets the copies with these targets, all or none; one that is not recorded is no failure.
    bool Remove(const QStringList& targets);

private:
    Ledger(const QString& databaseFile, int user, bool readOnly);

    void OpenDatabase(int busyTimeout);
    /// Runs an operation on the database; an exception becomes `failed` and the error.
    template <typename Result, typename Operation>
    Result Run(const char* name, Result failed, Operation operation);
    /// Likewise, in a transaction that writes, over tables that are there.
    template <typename Operation>
    bool Change(const char* name, Operation operation);
    void Remember(const char* operation, const char* reason);

    const QString m_file;
    const int m_user;
    const bool m_readOnly;
    /// Null when it could not be opened.
    std::unique_ptr<SQLite::Database> m_database;
    QString m_error;
};

} // namespace Halvern::Jobs
