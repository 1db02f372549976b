// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "AliasLog.h"
#include "FilePlacer.h"
#include "JobControl.h"
#include "JobFile.h"
#include "LinkReader.h"
#include "StagedCopy.h"
#include "Staging.h"

#include "base/FileCopy.h"
#include "base/RootedFolder.h"

namespace Halvern::Jobs {

/// Makes single copies: each is complete, its links are rewritten and were read again, before
/// it appears under its name in one step. Until then what stood there stands there; a failure
/// leaves it so. What is replaced is in the base store before.
class FileMaker
{
public:
    FileMaker(const JobState& job, JobControl& control, LinkReader& reader,
              const Base::RootedFolder& cloud, const Staging& staging)
        : m_control(control), m_reader(reader), m_cloud(cloud), m_staging(staging),
          m_placer(job, control, cloud, staging)
    {}

    bool MakeFolder(const JobFile& file);
    /// Carries out the deed; the outcome says what came of it. False when the job was stopped
    /// meanwhile: the file then is as it was, and so is what stands at its target.
    [[nodiscard]] bool Make(JobFile& file);
    /// Gives the copy that is at the target of the file the links that it should hold, if it
    /// still is what it was when its status was noted. Needs no source. False as above.
    [[nodiscard]] bool Relink(JobFile& file);

private:
    AliasLog::Names NamesFor(const JobFile& file, const StagedCopy& staged) const;
    void MakeCopy(JobFile& file);
    void RelinkCopy(JobFile& file);
    bool IsStopped() { return m_placer.IsStopped(); }
    void NamePlace(JobFile& file, StagedCopy& staged) const;
    bool Take(JobFile& file, StagedCopy& staged);
    bool WriteLinks(JobFile& file, const StagedCopy& staged, const LinkReader::Links& links);
    bool HoldsLinks(const JobFile& file, const StagedCopy& staged, const LinkReader::Links& asked);
    bool HasLostLinks(const JobFile& file, const LinkReader::Links& asked,
                      const LinkReader::Links& found);
    bool IsWrittenUnseen(const StagedCopy& staged, const LinkReader::Links& links);
    bool RewritesFor(const JobFile& file, LinkReader::Links& links);
    void WriteOtherLinks(JobFile& file, const std::filesystem::path& target);
    void FailToCopy(JobFile& file, const Base::FileResult& why);
    void FailToRewrite(JobFile& file, bool isHeld);

    JobControl& m_control;
    LinkReader& m_reader;
    const Base::RootedFolder& m_cloud;
    const Staging& m_staging;
    FilePlacer m_placer;
};

} // namespace Halvern::Jobs
