// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Batch.h"
#include "DiskFlush.h"
#include "FileMaker.h"
#include "JobControl.h"
#include "JobFile.h"
#include "Journal.h"
#include "LinkReader.h"
#include "Records.h"
#include "Results.h"
#include "Staging.h"

#include "base/RootedFolder.h"

#include <deque>

namespace Halvern::Jobs {

/// What the parts of a job that write work with.
struct JobMeans
{
    JobState& job;
    JobControl& control;
    LinkReader& reader;
    Journal& journal;
    Records& records;
    Results& results;
    Boundary& boundary;
};

/// Makes folders and copies: batch by batch those that nothing keeps from it, then, each in a batch
/// of its own, those whose links depend on what stands around them, then the copies that stay and
/// get other links.
class Execution
{
public:
    Execution(const JobMeans& means, const Base::RootedFolder& cloud, Staging& staging,
              DiskFlush& flush)
        : m_job(means.job), m_control(means.control), m_journal(means.journal),
          m_records(means.records), m_results(means.results), m_flush(flush),
          m_batch(m_job, m_control, cloud, staging, flush),
          m_maker(m_job, m_control, means.reader, cloud, staging, m_batch, &means.boundary)
    {}

    void Run();

private:
    bool IsStopped();
    void MakeFolders();
    void BeginPhase(Deed deed);
    bool MakeFiles(Deed deed);
    bool MakeLast(const QList<qsizetype>& places);
    FileMaker::Made MakeFile(JobFile& file, FileMaker::Round round);
    FileMaker::Made MakeReady(JobFile& file, FileMaker::Round round);
    bool CompleteBatch();
    void TellSettled();
    void TellOfWaiting();
    void RelinkAroundFailures();

    JobState& m_job;
    JobControl& m_control;
    Journal& m_journal;
    Records& m_records;
    Results& m_results;
    DiskFlush& m_flush;
    Batch m_batch;
    FileMaker m_maker;
    /// Of the phase, in their order.
    std::deque<JobFile*> m_untold;
};

} // namespace Halvern::Jobs
