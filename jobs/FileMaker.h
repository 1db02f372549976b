// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Batch.h"
#include "Boundary.h"
#include "CopyLinks.h"
#include "JobControl.h"
#include "JobFile.h"
#include "LinkReader.h"
#include "RealFiles.h"
#include "StagedCopy.h"
#include "Staging.h"

#include "base/FileCopy.h"
#include "base/RootedFolder.h"

#include <vector>

namespace Halvern::Jobs {

/// Makes single copies ready, complete, with their links rewritten and read again, and hands them
/// to the batch that gives them their names.
class FileMaker
{
public:
    enum class Round
    {
        First,
        /// All others are in their places.
        Last,
    };
    enum class Made
    {
        /// It is in the batch, or has ended.
        Now,
        /// The links of the file depend on what stands around its target: nothing has happened,
        /// and it is to be made last.
        Later,
        /// The disk is full as long as those that are ready wait: nothing has happened, and it is
        /// to be tried again once the batch is complete.
        Full,
        Stopped,
    };

    /// `boundary` judges sources that are not what they were when the job was planned; it may be
    /// null where none is copied.
    FileMaker(const JobState& job, JobControl& control, LinkReader& reader,
              const Base::RootedFolder& cloud, Staging& staging, Batch& batch, Boundary* boundary)
        : m_job(job), m_control(control), m_reader(reader), m_links(job, control, reader),
          m_cloud(cloud), m_staging(staging), m_batch(batch), m_boundary(boundary)
    {}

    /// `made` gets those that were not there.
    bool MakeFolder(const JobFile& file, std::vector<std::filesystem::path>& made);
    /// Makes the copy ready; the outcome says when that failed. When the job was stopped meanwhile
    /// the file is as it was.
    [[nodiscard]] Made Make(JobFile& file, Round round);
    /// The same for the copy that is at the target of the file and is to get the links that it
    /// should hold, if it still is what it was when its status was noted. Needs no source.
    [[nodiscard]] Made Relink(JobFile& file);

private:
    /// How far a copy has come.
    enum class State
    {
        Ready,
        Ended,
        Later,
    };

    Made HandOver(StagedCopy staged, State state);
    State MakeCopy(StagedCopy& staged, Round round);
    bool RelinkCopy(StagedCopy& staged);
    bool IsStopped();
    bool IsFull(const Base::FileResult& copied);
    void NamePlace(StagedCopy& staged) const;
    bool Take(StagedCopy& staged);
    bool MayBeTaken(const JobFile& file, const Base::FileStatus& taken);
    bool MakeFolderOf(JobFile& file);
    bool DependsOnPlace(const StagedCopy& staged);
    bool GiveLinks(StagedCopy& staged, Round round);
    bool WriteBeside(StagedCopy& staged);
    bool GiveUp(StagedCopy& staged);
    bool TakeCopy(StagedCopy& staged);
    bool WriteAgain(StagedCopy& staged, const LinkReader::Links& links,
                    const LinkReader::Links& read);
    bool WriteOtherLinks(StagedCopy& staged, const std::filesystem::path& target);
    bool FailToRewrite(JobFile& file);
    void FailToCopy(JobFile& file, const Base::FileResult& why);
    void Fail(JobFile& file, FileLink::ProblemKind kind, const QString& text);
    QString Reason(const JobFile& file, const Base::FileResult& failure) const;

    const JobState& m_job;
    JobControl& m_control;
    LinkReader& m_reader;
    CopyLinks m_links;
    const Base::RootedFolder& m_cloud;
    Staging& m_staging;
    Batch& m_batch;
    /// Of the file that is being made.
    bool m_isStopped = false;
    bool m_isFull = false;
    Boundary* m_boundary;
    RealFiles m_realFiles;
};

} // namespace Halvern::Jobs
