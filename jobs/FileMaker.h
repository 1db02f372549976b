// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Batch.h"
#include "JobControl.h"
#include "JobFile.h"
#include "LinkReader.h"
#include "Staging.h"

#include "base/FileCopy.h"
#include "base/RootedFolder.h"

namespace Halvern::Jobs {

/// Makes single copies ready, complete, with their links rewritten and read again, and hands them
/// to the batch that gives them their names.
class FileMaker
{
public:
    FileMaker(const JobState& job, JobControl& control, LinkReader& reader,
              const Base::RootedFolder& cloud, Staging& staging, Batch& batch)
        : m_job(job), m_control(control), m_reader(reader), m_cloud(cloud), m_staging(staging),
          m_batch(batch)
    {}

    /// `made` gets those that were not there.
    bool MakeFolder(const JobFile& file, std::vector<std::filesystem::path>& made);
    /// Makes the copy ready; the outcome says when that failed. False when the disk is full as long
    /// as those that are ready wait: to be repeated once the batch is complete.
    bool Make(JobFile& file);
    /// Gives the copy that is at the target of the file the links that it should hold, if it still
    /// is what it was when its status was noted. Needs no source. False as above.
    bool Relink(JobFile& file);

private:
    void NamePlace(JobFile& file, StagedFile& staged) const;
    bool Take(JobFile& file, StagedFile& staged);
    bool WriteLinks(JobFile& file, const StagedFile& staged, const LinkReader::Links& links);
    bool HoldsLinks(const JobFile& file, const StagedFile& staged, const LinkReader::Links& asked);
    bool IsWrittenUnseen(const StagedFile& staged, const LinkReader::Links& links);
    bool RewritesFor(const JobFile& file, LinkReader::Links& links);
    void TakeAndRewrite(JobFile& file);
    void WriteOtherLinks(StagedFile& staged, const std::filesystem::path& target);
    void NoteStamps(JobFile& file, const StagedFile& staged) const;
    void Fail(JobFile& file, FileLink::ProblemKind kind, const QString& text);
    QString Reason(const JobFile& file, const Base::FileResult& failure) const;
    void FailToCopy(JobFile& file, const Base::FileResult& why);
    std::filesystem::path Below(const QString& target) const;

    const JobState& m_job;
    JobControl& m_control;
    LinkReader& m_reader;
    const Base::RootedFolder& m_cloud;
    Staging& m_staging;
    Batch& m_batch;
    bool m_isFull = false;
};

} // namespace Halvern::Jobs
