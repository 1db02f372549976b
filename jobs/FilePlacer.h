// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobControl.h"
#include "JobFile.h"
#include "StagedCopy.h"
#include "Staging.h"

#include "base/RootedFolder.h"

namespace Halvern::Jobs {

/// Lets copies that are made ready appear under their names, each in one step. Until then what
/// stood there stands there; a failure leaves it so. What is replaced is in the base store before.
class FilePlacer
{
public:
    FilePlacer(const JobState& job, JobControl& control, const Base::RootedFolder& cloud,
               const Staging& staging)
        : m_job(job), m_control(control), m_cloud(cloud), m_staging(staging)
    {}

    /// False when the copy is not in place; the outcome says why, unless the job was stopped.
    bool Place(JobFile& file, const StagedCopy& staged);
    /// Once the job is to stop, what fails is cut off, and what succeeds is not put in place.
    bool IsStopped();
    /// The answer was yes before.
    bool WasStopped() const { return m_isStopped; }
    /// Ends it as failed for a reason that only a text tells.
    void Fail(JobFile& file, FileLink::ProblemKind kind, const QString& text);
    /// Below the cloud folder.
    std::filesystem::path Below(const QString& target) const;
    /// In words that name what people know.
    QString Reason(const JobFile& file, const Base::FileResult& failure) const;

private:
    bool MayReplace(JobFile& file, const Base::FileStatus& there);
    Base::FileResult Secure(JobFile& file, const StagedCopy& staged, const Base::FileStatus& there);
    Base::FileResult Move(JobFile& file, const StagedCopy& staged, const Base::FileStatus& there);
    Base::FileResult MoveAcross(const StagedCopy& staged, const std::filesystem::path& target,
                                bool replaces) const;
    bool Adopt(JobFile& file, const StagedCopy& staged) const;
    bool MakeWay(JobFile& file, const Base::FileStatus& there);
    bool SetLinkAside(JobFile& file);
    static void NoteStamps(JobFile& file, const StagedCopy& staged);
    bool FailToPlace(JobFile& file, const Base::FileResult& why);

    const JobState& m_job;
    JobControl& m_control;
    const Base::RootedFolder& m_cloud;
    const Staging& m_staging;
    bool m_isStopped = false;
};

} // namespace Halvern::Jobs
