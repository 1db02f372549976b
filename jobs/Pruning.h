// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"

#include "base/RootedFolder.h"

namespace Halvern::Jobs {

/// Takes orphans out of the cloud folder once they are in the base store. What somebody changed
/// since it was copied is not this library's any more, and what another copy links stays.
class Pruning
{
public:
    explicit Pruning(JobState& job) : m_job(job) {}

    /// Notes in a plan which orphans will be pruned, and why others will not be.
    void Foresee();
    /// Does it, and notes the same of what was done.
    void Prune(const Base::RootedFolder& cloud);

private:
    bool MayGo(const Orphan& orphan, const Base::FileStatus& status);
    bool PutAway(const Base::RootedFolder& cloud, const CopyRecord& orphan,
                 const Base::FileStatus& status);

    JobState& m_job;
};

} // namespace Halvern::Jobs
