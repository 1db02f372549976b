// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobControl.h"
#include "JobFile.h"
#include "SourceFolders.h"

#include <functional>

namespace Halvern::Jobs {

/// The last step of a move: deletes each selected file whose copy is in place and recorded, and
/// whose whole link tree is in order, unless it changed since it was read; then the selected
/// folders that are empty and were made in the cloud folder. Nothing else is deleted, and no right
/// is changed.
class SourceRemoval
{
public:
    SourceRemoval(JobState& job, JobControl& control)
        : m_job(job), m_control(control), m_folders(job.request.sources)
    {}

    /// The source stays; the outcome says so.
    static void Keep(JobFile& file);
    /// Marks in a plan the files whose sources will stay.
    void Foresee();
    /// `announced` writes down which files are about to go, before the first one does; `told` hears
    /// of each file once it is gone or stays.
    void Remove(const std::function<void(const QList<JobFile*>&)>& announced,
                const std::function<void(JobFile&)>& told);

private:
    QList<bool> FindBroken() const;
    bool HasGoodCopy(const JobFile& file) const;
    bool IsInOrder(const JobFile& file) const;
    static bool IsWhatWasTaken(const JobFile& file, const Base::FileStatus& now);
    bool RemoveSource(JobFile& file);
    void RemoveFolders();

    JobState& m_job;
    JobControl& m_control;
    SourceFolders m_folders;
};

} // namespace Halvern::Jobs
