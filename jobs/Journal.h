// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"

#include "base/FileStatus.h"
#include "base/HeldFile.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace Halvern::Jobs {

/// DO NOT CHANGE THESE VALUES: they are stored in the database.
enum class RunState
{
    Running = 0,
    Complete = 1,
    Cancelled = 2,
    /// Something of it failed.
    Failed = 3,
    /// Its process ended before it did, and a later run has seen to what it left.
    Interrupted = 4
};

/// DO NOT CHANGE THESE VALUES: they are stored in the database.
enum class RunAction
{
    /// A copy where nothing stood.
    Copy = 0,
    /// A copy in the place of what stood there.
    Replace = 1,
    /// A copy that is there gets other links.
    Relink = 2,
    /// Nothing is done to the copy; its source is to be deleted.
    Move = 3,
    /// The copy is taken out of the cloud folder.
    Prune = 4
};

/// How far a file has come. DO NOT CHANGE THESE VALUES: they are stored in the database.
enum class RunStep
{
    Planned = 0,
    /// A copy is about to be taken away. One that is about to be given its name is known by the
    /// record that it will have.
    Ready = 1,
    /// It is settled, and on the disk as far as that was wanted.
    Done = 2
};

/// A file of a run, as it was planned.
struct RunFile
{
    qint64 position = 0;
    QString source;
    QString target;
    RunAction action = RunAction::Copy;
    bool moves = false;
    FileStamp sourceStamp;
    /// What stood at the target.
    Base::FileStatus old;
    /// Where a symbolic link there goes.
    QString setAside;
    RunStep step = RunStep::Planned;
    /// Of the base store; empty for none.
    QString version;
    /// The record as it was.
    std::optional<CopyRecord> before;
};

/// A file that is about to be given its name.
struct ReadyFile
{
    qint64 position = 0;
    QString version;
    /// As it will be.
    CopyRecord record;
};

/// A file that is settled.
struct DoneFile
{
    qint64 position = 0;
    int outcome = 0;
    bool sourceDeleted = false;
    /// The copy that stands there now.
    FileStamp stamp;
};

/// A run whose process ended before it did.
struct InterruptedRun
{
    qint64 id = -1;
    QString command;
    QString target;
    QDateTime begun;
    qint64 process = 0;
    /// Files that it meant to do something to, and those of them that it had done.
    qint64 planned = 0;
    qint64 done = 0;
    QString holder;
};

struct RunHeader
{
    QString command;
    QString cloudFolder;
    QString target;
    QString staging;
    QJsonObject request;
};

/// Of how many runs the journal tells at most.
struct RunLimits
{
    int number = 100;
    int days = 90;
};

/// What was begun, written down before it is done, in tables of its own beside the ledger's:
///
///     Begin      the run and all that it plans, before the first file changes
///     Advance    once per batch: copies that are in place and on the disk go to the ledger, and
///                the next ones are announced with the records that they will have
///     End
///
/// The process holds a file while the run lives, which the system lets go however the process ends.
/// A later run finds those that nobody holds: what they had announced and is in place counts as
/// recorded.
class Journal
{
public:
    /// `ledger` outlives it.
    explicit Journal(Ledger& ledger) : m_ledger(ledger) {}
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Those below the cloud folder, the oldest first; nothing is written. `records` gets those of
    /// copies that they had announced and that are in place.
    QList<InterruptedRun> FindInterrupted(const QString& cloudFolder,
                                          QList<CopyRecord>& records) const;
    /// Processes that import into the cloud folder now, beside this one: "process 17 (since
    /// 16:20:03)".
    QStringList Living(const QString& cloudFolder) const;

    /// All or nothing; false when the database refused. What interrupted runs left is taken over.
    bool Begin(const RunHeader& header, const QList<RunFile>& planned,
               const QList<InterruptedRun>& interrupted, QList<CopyRecord> taken,
               const RunLimits& limits);
    bool IsBegun() const { return m_id >= 0; }
    /// In one step: `records` and `done` are settled, `ready` and `added` begin. Without a run only
    /// the records are written.
    bool Advance(QList<CopyRecord> records, const QList<DoneFile>& done,
                 const QList<ReadyFile>& ready, const QList<RunFile>& added = {});
    bool End(RunState state, const QJsonObject& counts);
    /// What the program ended with; needs no flush.
    void NoteExitCode(int code);

private:
    QString Folder() const;
    Base::FileResult Hold();
    void RemoveLeftovers() const;
    void LetGo();

    Ledger& m_ledger;
    qint64 m_id = -1;
    QString m_holder;
    Base::HeldFile m_held;
};

/// The ledger's records, as if interrupted runs had recorded what they made, too.
QList<CopyRecord> WithTaken(QList<CopyRecord> records, const QList<CopyRecord>& taken);

/// The folder with the files that runs hold, beside the database; empty when that is in memory.
QString RunsFolder(const QString& databaseFile);

} // namespace Halvern::Jobs
