// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DiskFlush.h"
#include "JobControl.h"
#include "JobFile.h"
#include "StagedCopy.h"
#include "Staging.h"

#include "base/RootedFolder.h"

namespace Halvern::Jobs {

/// Lets single copies that are made ready appear under their names, each in one step:
///
///     MakeWay     what stands at the target is what was planned, and is kept
///     Place       requires that the copy and what was kept are on the disk
///
/// Until then what stood there stands there; a failure leaves it so.
class FilePlacer
{
public:
    enum class Way
    {
        Free,
        /// The file is settled; or the job was stopped, and the file is as it was.
        Closed,
        /// The base store keeps no more before some of those that are kept were replaced.
        NoRoom,
    };

    FilePlacer(const JobState& job, JobControl& control, const Base::RootedFolder& cloud,
               const Staging& staging, DiskFlush& flush)
        : m_job(job), m_control(control), m_cloud(cloud), m_staging(staging), m_flush(flush)
    {}

    /// `mayWait`: with NoRoom as the answer nothing has happened.
    Way MakeWay(StagedCopy& staged, bool mayWait);
    /// The file is settled after it, unless the job was stopped.
    void Place(StagedCopy& staged);
    /// Settles it for a reason that only a text tells.
    void Fail(StagedCopy& staged, const QString& text);

    /// The copy stays what it was, and its links are still to be rewritten.
    static void FailToRewrite(JobFile& file, bool isHeld);

private:
    bool Look(StagedCopy& staged);
    Way KeepOld(StagedCopy& staged, bool mayWait);
    bool SetLinkAside(JobFile& file);
    Base::FileResult Rename(StagedCopy& staged);
    Base::FileResult MoveAcross(StagedCopy& staged);
    bool Move(StagedCopy& staged);
    bool Adopt(const StagedCopy& staged);
    void FailToPlace(StagedCopy& staged, const Base::FileResult& why);
    static void Settle(StagedCopy& staged, bool isPlaced);
    std::filesystem::path Below(const JobFile& file) const;

    const JobState& m_job;
    JobControl& m_control;
    const Base::RootedFolder& m_cloud;
    const Staging& m_staging;
    DiskFlush& m_flush;
};

} // namespace Halvern::Jobs
