// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Batch.h"
#include "JobDatabase.h"
#include "JobFile.h"
#include "Journal.h"
#include "Ledger.h"

#include "filelink/FileLinkImporter.h"

namespace Halvern::Jobs {

/// Writes down what a job did: the ledger of this library while files are made, batch by batch, so
/// that little is forgotten when the process is killed; items and copy history of the sync database
/// at the end.
class Records
{
public:
    Records(JobState& job, Ledger& ledger, Journal& journal, JobDatabase& database,
            FileLink::FileLinkImporter& importer)
        : m_job(job), m_ledger(ledger), m_journal(journal), m_database(database),
          m_importer(importer)
    {}

    /// Writes down the run and what it plans. False when the database refused.
    bool Begin(const QString& staging, const QList<InterruptedRun>& interrupted,
               const QList<CopyRecord>& taken);
    /// A copy is in place. Written with the next Commit.
    void Note(JobFile& file);
    /// The journal has nothing more to tell of the file.
    void NoteSettled(JobFile& file);
    /// Writes what was noted, and what is about to be placed. False when the database refused.
    /// Requires: what was noted is on the disk.
    bool Commit(const std::vector<const StagedCopy*>& ready = {});
    /// Orphans that are about to be taken out of the cloud folder: targets, and where the base
    /// store has them.
    bool AnnouncePruned(const QList<std::pair<CopyRecord, QString>>& orphans);
    /// One of them, by its place among them, is gone.
    void NotePruned(qsizetype orphan);
    /// Forgets what was noted.
    void Drop();
    /// The run is over. False when the database refused.
    bool End(bool isComplete);
    /// Items, their links, and the copy history; nothing when nothing was done. False when the
    /// module was cancelled or could not.
    bool Finish();
    /// Forgets copies.
    bool Forget(const QStringList& targets) { return m_ledger.Remove(targets); }

private:
    bool ShowToModule(JobFile& file) const;
    bool WriteHistory();

    JobState& m_job;
    Ledger& m_ledger;
    Journal& m_journal;
    JobDatabase& m_database;
    FileLink::FileLinkImporter& m_importer;
    QList<CopyRecord> m_noted;
    QList<DoneFile> m_settled;
};

/// That of the session. Requires a session.
std::unique_ptr<Ledger> OpenLedger();
/// What is to be remembered of a copy that is in place.
CopyRecord RecordOf(const JobFile& file, const JobState& job);

} // namespace Halvern::Jobs
