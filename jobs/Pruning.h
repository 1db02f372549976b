// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DiskFlush.h"
#include "JobFile.h"
#include "Records.h"

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
    /// Does it, and notes the same of what was done. What is kept is on the disk, and the journal
    /// tells of it, before anything goes.
    void Prune(const Base::RootedFolder& cloud, DiskFlush& flush, Records& records);

private:
    /// An orphan that is in the base store.
    struct Kept
    {
        CopyRecord record;
        Base::FileStatus status;
        QString version;
    };

    bool MayGo(const Orphan& orphan, const Base::FileStatus& status);
    QList<Kept> KeepAll(const Base::RootedFolder& cloud);
    bool TakeOut(const Base::RootedFolder& cloud, const Kept& kept);

    JobState& m_job;
};

} // namespace Halvern::Jobs
