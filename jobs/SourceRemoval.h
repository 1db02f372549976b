// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobControl.h"
#include "JobFile.h"
#include "SourceFolders.h"

#include <functional>

namespace Halvern::Jobs {

/// The last step of a move: deletes each selected file whose copy is in place and recorded, whose
/// whole link tree is in order, and that no source links that stays, unless it changed since it was
/// read; then the selected folders that are empty. Nothing else is deleted, and no right is
/// changed.
class SourceRemoval
{
public:
    SourceRemoval(JobState& job, JobControl& control)
        : m_job(job), m_control(control), m_folders(job.request.sources)
    {}

    /// Notes in a plan which sources will stay, and why.
    void Foresee();
    /// `announced` writes down which files are about to go, before the first one does; `told` hears
    /// of each file whose copy is in order once its source is gone or stays.
    void Remove(const std::function<void(const QList<JobFile*>&)>& announced,
                const std::function<void(JobFile&)>& told);
    /// Says of those whose turn has not come that they stay.
    void KeepRest();

private:
    void FindLinks();
    QList<qsizetype> LinkedFrom(const JobFile& holder) const;
    SourceStays OwnReason(const JobFile& file) const;
    bool HasGoodCopy(const JobFile& file) const;
    bool IsInOrder(const JobFile& file) const;
    bool WillStay(const JobFile& file) const;
    void Keep(qsizetype place, SourceStays why, const QString& because = {});
    void KeepForTheirLinks();
    void KeepWhatTheyLink(QList<qsizetype> staying);
    void KeepWhatMustNotGo(const QList<qsizetype>& places);
    QList<qsizetype> HoldersFirst(const QList<qsizetype>& places) const;
    QList<qsizetype> Deletable() const;
    static bool IsWhatWasTaken(const JobFile& file, const Base::FileStatus& now);
    bool MayGo(const JobFile& file);
    bool RemoveSource(const JobFile& file);
    bool Fail(const JobFile& file, const QString& text);
    void RemoveFolders();

    JobState& m_job;
    JobControl& m_control;
    SourceFolders m_folders;
    /// For each file what it links, as far as that is part of the job.
    QList<QList<qsizetype>> m_linked;
};

} // namespace Halvern::Jobs
