// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobDatabase.h"
#include "JobFile.h"
#include "Ledger.h"

#include "filelink/FileLinkImporter.h"

#include <QtCore/QElapsedTimer>

namespace Halvern::Jobs {

/// Writes down what a job did: the ledger of this library while files are made, so that little is
/// forgotten when the process is killed (what is, the next import finds by its content); items and
/// copy history of the sync database at the end.
class Records
{
public:
    Records(JobState& job, Ledger& ledger, JobDatabase& database,
            FileLink::FileLinkImporter& importer)
        : m_job(job), m_ledger(ledger), m_database(database), m_importer(importer)
    {}

    /// A copy is in place. Written soon.
    void Note(const JobFile& file);
    /// Writes what was noted. False when the database refused.
    bool Flush();
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
    JobDatabase& m_database;
    FileLink::FileLinkImporter& m_importer;
    QList<CopyRecord> m_noted;
    QElapsedTimer m_sinceWritten;
};

/// That of the session. Requires a session.
std::unique_ptr<Ledger> OpenLedger();
/// What is to be remembered of a copy that is in place.
CopyRecord RecordOf(const JobFile& file, const JobState& job);

} // namespace Halvern::Jobs
