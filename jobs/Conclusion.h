// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CopyIndex.h"
#include "DiskFlush.h"
#include "Execution.h"

#include "base/RootedFolder.h"

#include <functional>

namespace Halvern::Jobs {

/// What a job does when its copies are in place: they are recorded once they are on the disk, and
/// only then sources and orphans go. A wish to stop changes nothing any more.
class Conclusion
{
public:
    Conclusion(const JobMeans& means, const CopyIndex& copies, const Base::RootedFolder& cloud,
               DiskFlush& flush)
        : m_job(means.job), m_control(means.control), m_records(means.records),
          m_results(means.results), m_copies(copies), m_cloud(cloud), m_flush(flush)
    {}

    /// `databaseError` is asked when the records are written: why they were not.
    void Draw(const std::function<QString()>& databaseError);

private:
    bool SecureCopies();
    void MoveSources();
    void FindChangedCopies();
    void RemoveSources();
    void NoteMove(JobFile& file, bool isMoved);
    bool HasFailed() const;

    JobState& m_job;
    JobControl& m_control;
    Records& m_records;
    Results& m_results;
    const CopyIndex& m_copies;
    const Base::RootedFolder& m_cloud;
    DiskFlush& m_flush;
};

} // namespace Halvern::Jobs
