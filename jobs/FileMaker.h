// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CopyLinks.h"
#include "FilePlacer.h"
#include "JobControl.h"
#include "JobFile.h"
#include "LinkReader.h"
#include "StagedCopy.h"
#include "Staging.h"

#include "base/FileCopy.h"
#include "base/RootedFolder.h"

namespace Halvern::Jobs {

/// Makes single copies: each is complete, its links are rewritten and were read again, before it
/// appears under its name in one step. Until then what stood there stands there; a failure leaves
/// it so. What is replaced is in the base store before.
class FileMaker
{
public:
    enum class Turn
    {
        First,
        /// All others are in their places.
        Last,
    };
    enum class Made
    {
        Now,
        /// The links of the file depend on what stands around its target: nothing has happened,
        /// and it is to be made last.
        Later,
        Stopped,
    };

    FileMaker(const JobState& job, JobControl& control, LinkReader& reader,
              const Base::RootedFolder& cloud, const Staging& staging)
        : m_control(control), m_reader(reader), m_links(job, control, reader), m_cloud(cloud),
          m_staging(staging), m_placer(job, control, cloud, staging)
    {}

    bool MakeFolder(const JobFile& file);
    /// Carries out the deed; the outcome says what came of it. When the job was stopped meanwhile
    /// the file is as it was, and so is what stands at its target.
    [[nodiscard]] Made Make(JobFile& file, Turn turn);
    /// Gives the copy that is at the target of the file the links that it should hold, if it still
    /// is what it was when its status was noted. Needs no source. False when the job was stopped
    /// meanwhile.
    [[nodiscard]] bool Relink(JobFile& file);

private:
    bool MakeCopy(JobFile& file, Turn turn);
    void RelinkCopy(JobFile& file);
    bool IsStopped() { return m_placer.IsStopped(); }
    void NamePlace(JobFile& file, StagedCopy& staged) const;
    bool Take(JobFile& file, StagedCopy& staged);
    bool MakeFolderOf(JobFile& file);
    bool DependsOnPlace(const JobFile& file, const StagedCopy& staged);
    bool GiveLinks(JobFile& file, StagedCopy& staged, Turn turn);
    bool WriteBeside(const JobFile& file, StagedCopy& staged);
    bool GiveUp(JobFile& file, StagedCopy& staged);
    bool TakeCopy(JobFile& file, StagedCopy& staged);
    bool WriteAgain(JobFile& file, StagedCopy& staged, const LinkReader::Links& links,
                    const LinkReader::Links& read);
    void WriteOtherLinks(JobFile& file, const std::filesystem::path& target);
    void FailToCopy(JobFile& file, const Base::FileResult& why);
    void FailToRewrite(JobFile& file, bool isHeld);

    JobControl& m_control;
    LinkReader& m_reader;
    CopyLinks m_links;
    const Base::RootedFolder& m_cloud;
    const Staging& m_staging;
    FilePlacer m_placer;
};

} // namespace Halvern::Jobs
