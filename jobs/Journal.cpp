// SPDX-License-Identifier: Apache-2.0

#include "Journal.h"

#include "FileStamps.h"
#include "JournalRows.h"
#include "JournalSchema.h"
#include "Paths.h"

#include "base/Directory.h"
#include "base/FileLock.h"
#include "base/FileRenaming.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QtCore/QDir>
#include <QtCore/QRandomGenerator>

#include <stdexcept>
#include <utility>

namespace Halvern::Jobs {

namespace {

constexpr char Writing[] = "Writing the journal";

bool IsHeld(const QString& folder, const InterruptedRun& run)
{
    return Base::IsFileLocked(Native(folder + u'/' + run.holder));
}

} // namespace

QString RunsFolder(const QString& databaseFile)
{
    return databaseFile == u":memory:" ? QString() : databaseFile + QStringLiteral(".runs");
}

QList<CopyRecord> WithTaken(QList<CopyRecord> records, const QList<CopyRecord>& taken)
{
    QHash<QString, qsizetype> places;
    for (qsizetype i = 0; !taken.isEmpty() && i < records.size(); ++i)
        places.insert(PathKey(records.at(i).target), i);
    for (const CopyRecord& record : taken) {
        const auto place = places.constFind(PathKey(record.target));
        if (place == places.constEnd()) {
            places.insert(PathKey(record.target), records.size());
            records.append(record);
            continue;
        }
        const qint64 id = records.at(*place).id;
        records[*place] = record;
        records[*place].id = id;
    }
    return records;
}

Journal::~Journal()
{
    LetGo();
}

QString Journal::Folder() const
{
    return RunsFolder(m_ledger.File());
}

QList<InterruptedRun> Journal::FindInterrupted(const QString& cloudFolder,
                                               QList<CopyRecord>& records) const
{
    QList<InterruptedRun> runs;
    QList<QList<CopyRecord>> announced;
    static_cast<void>(m_ledger.Look("Reading the journal", [&](SQLite::Database& database) {
        if (!JournalSchema::HasTables(database))
            return;
        for (const InterruptedRun& run :
             JournalRows::ReadRunning(database, m_ledger.User(), cloudFolder)) {
            if (IsHeld(Folder(), run))
                continue;
            runs.append(run);
            announced.append(JournalRows::ReadAnnounced(database, run.id));
        }
    }));
    for (qsizetype i = 0; i < runs.size(); ++i)
        for (const CopyRecord& record : announced.at(i)) {
            // Copies keep the times of their sources: an old file of the same size and time may
            // stand there still.
            if (!IsSameAsRecorded(record.targetStamp, record.recordedAt, record.target, true))
                continue;
            records.append(record);
            ++runs[i].done;
        }
    return runs;
}

QStringList Journal::Living(const QString& cloudFolder) const
{
    QStringList living;
    static_cast<void>(m_ledger.Look("Reading the journal", [&](SQLite::Database& database) {
        if (!JournalSchema::HasTables(database))
            return;
        for (const InterruptedRun& run :
             JournalRows::ReadRunning(database, m_ledger.User(), cloudFolder))
            if (run.id != m_id && IsHeld(Folder(), run))
                living.append(QStringLiteral("process %1 (since %2)")
                                  .arg(run.process)
                                  .arg(run.begun.toLocalTime().toString(u"HH:mm:ss")));
    }));
    return living;
}

/// Before the run is in the journal: one that nobody holds counts as interrupted.
Base::FileResult Journal::Hold()
{
    const QString folder = Folder();
    if (folder.isEmpty())
        return {};
    if (!QDir().mkpath(folder))
        return Base::FileResult::Failed(folder.toStdString() + " cannot be made");
    Base::FileResult held;
    for (int tries = 0; tries < 8; ++tries) {
        m_holder =
            QString::number(QRandomGenerator::system()->generate64(), 36) + QStringLiteral(".run");
        const std::filesystem::path file = Native(folder + u'/' + m_holder);
        held = m_held.Hold(file);
        // Taken for a leftover by another process, which removes it.
        if (held && Base::ReadLinkStatus(file).Exists())
            return held;
        m_held.Release();
    }
    return held ? Base::FileResult::Failed(folder.toStdString() + " cannot be used") : held;
}

/// What killed processes held.
void Journal::RemoveLeftovers() const
{
    if (Folder().isEmpty())
        return;
    QStringList names;
    Base::VisitNames(Native(Folder()), [&](const std::string& name) {
        names.append(QString::fromStdString(name));
        return true;
    });
    for (const QString& name : std::as_const(names)) {
        Base::HeldFile leftover;
        const std::filesystem::path file = Native(Folder() + u'/' + name);
        if (!name.endsWith(u".run") || name == m_holder || !leftover.Hold(file))
            continue;
        Base::RemoveFile(file);
        // Windows removes nothing that is held, and nothing that another one holds by now.
        leftover.Release();
        Base::RemoveFile(file);
    }
}

void Journal::LetGo()
{
    if (!m_held.IsHeld())
        return;
    m_held.Release();
    Base::RemoveFile(Native(Folder() + u'/' + m_holder));
}

bool Journal::Begin(const RunHeader& header, const QList<RunFile>& planned,
                    const QList<InterruptedRun>& interrupted, QList<CopyRecord> taken,
                    const RunLimits& limits)
{
    const Base::FileResult held = Hold();
    qint64 id = -1;
    const bool written = m_ledger.Change(Writing, [&](SQLite::Database& database) {
        if (!held)
            throw std::runtime_error(held.Text());
        JournalSchema::Migrate(database);
        const int user = m_ledger.User();
        id = JournalRows::InsertRun(database, user, header, m_holder);
        JournalRows::InsertFiles(database, user, id, planned);
        m_ledger.WriteIn(database, taken);
        for (const InterruptedRun& run : interrupted)
            JournalRows::NoteTakenUp(database, run.id, id);
        JournalRows::Prune(database, user, limits);
    });
    if (!written) {
        LetGo();
        return false;
    }
    m_id = id;
    RemoveLeftovers();
    return true;
}

bool Journal::Advance(QList<CopyRecord> records, const QList<DoneFile>& done,
                      const QList<ReadyFile>& ready, const QList<RunFile>& added)
{
    if (!IsBegun())
        return records.isEmpty() || m_ledger.Write(records);
    if (records.isEmpty() && done.isEmpty() && ready.isEmpty() && added.isEmpty())
        return true;
    return m_ledger.Change("Writing the records of copies", [&](SQLite::Database& database) {
        m_ledger.WriteIn(database, records);
        JournalRows::ForgetAnnounced(database, m_id);
        JournalRows::NoteDone(database, m_id, done);
        JournalRows::InsertFiles(database, m_ledger.User(), m_id, added);
        JournalRows::NoteReady(database, m_ledger.User(), m_id, ready);
    });
}

bool Journal::End(RunState state, const QJsonObject& counts)
{
    const bool ended = !IsBegun() || m_ledger.Change(Writing, [&](SQLite::Database& database) {
        JournalRows::EndRun(database, m_id, state, counts);
    });
    LetGo();
    return ended;
}

void Journal::NoteExitCode(int code)
{
    if (!IsBegun())
        return;
    m_ledger.DoNotFlush();
    static_cast<void>(m_ledger.Change(Writing, [&](SQLite::Database& database) {
        JournalRows::NoteExitCode(database, m_id, code);
    }));
}

} // namespace Halvern::Jobs
