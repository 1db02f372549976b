// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "AliasLog.h"
#include "JobControl.h"
#include "JobFile.h"
#include "LinkReader.h"
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
    FileMaker(const JobState& job, JobControl& control, LinkReader& reader,
              const Base::RootedFolder& cloud, const Staging& staging)
        : m_job(job), m_control(control), m_reader(reader), m_cloud(cloud), m_staging(staging)
    {}

    bool MakeFolder(const JobFile& file);
    /// Carries out the deed; the outcome says what came of it. False when the job was stopped
    /// meanwhile: the file then is as it was, and so is what stands at its target.
    [[nodiscard]] bool Make(JobFile& file);
    /// Gives the copy that is at the target of the file the links that it should hold, if it still
    /// is what it was when its status was noted. Needs no source. False as above.
    [[nodiscard]] bool Relink(JobFile& file);

private:
    struct Staged;

    AliasLog::Names NamesFor(const JobFile& file, const Staged& staged) const;
    void MakeCopy(JobFile& file);
    void RelinkCopy(JobFile& file);
    bool IsStopped();
    void NamePlace(JobFile& file, Staged& staged) const;
    bool Take(JobFile& file, Staged& staged);
    bool WriteLinks(JobFile& file, const Staged& staged, const LinkReader::Links& links);
    bool HoldsLinks(const JobFile& file, const Staged& staged, const LinkReader::Links& asked);
    bool IsWrittenUnseen(const Staged& staged, const LinkReader::Links& links);
    bool RewritesFor(const JobFile& file, LinkReader::Links& links);
    Base::FileResult MoveAcross(const Staged& staged, const std::filesystem::path& target,
                                bool replaces) const;
    void WriteOtherLinks(JobFile& file, const std::filesystem::path& target);
    bool Place(JobFile& file, const Staged& staged);
    bool Adopt(JobFile& file, const Staged& staged) const;
    bool MakeWay(JobFile& file, const Base::FileStatus& there);
    bool SetLinkAside(JobFile& file);
    void NoteStamps(JobFile& file, const Staged& staged) const;
    void Fail(JobFile& file, FileLink::ProblemKind kind, const QString& text);
    QString Reason(const JobFile& file, const Base::FileResult& failure) const;
    void FailToCopy(JobFile& file, const Base::FileResult& why);
    void FailToRewrite(JobFile& file, bool isHeld);
    std::filesystem::path Below(const QString& target) const;

    const JobState& m_job;
    JobControl& m_control;
    LinkReader& m_reader;
    const Base::RootedFolder& m_cloud;
    const Staging& m_staging;
    bool m_isStopped = false;
};

} // namespace Halvern::Jobs
