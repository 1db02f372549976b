// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CopyIndex.h"
#include "JobControl.h"
#include "JobFile.h"
#include "LinkReader.h"

namespace Halvern::Jobs {

/// How a file and what stands at its target relate to what is recorded of them.
enum class Standing
{
    /// Nothing stands there.
    Free,
    Folder,
    /// A copy of this source, and neither changed since.
    Ours,
    SourceChanged,
    CopyChanged,
    BothChanged,
    /// Holds what the copy would hold, or what the source holds with the links of the source, but
    /// nothing says that it is a copy: from now on it is one.
    SameContent,
    Foreign,
};

/// Compares sources and copies. What is compared by content is read; nothing is written but in a
/// temporary folder.
class ThreeWays
{
public:
    ThreeWays(const JobState& job, JobControl& control, LinkReader& reader, const CopyIndex& copies)
        : m_job(job), m_control(control), m_reader(reader), m_copies(copies)
    {}

    /// Notes in the file what is recorded and what stands at the target. Requires its target, and
    /// that its links were worked out.
    Standing Of(JobFile& file) const;

private:
    bool HasSameContent(JobFile& file) const;
    bool MakeCopy(const JobFile& file, const LinkReader::Links& rewrites,
                  const QString& copy) const;
    bool HoldsTheSource(JobFile& file) const;
    bool HoldsLinksOnTheWay(JobFile& file, bool isSourceRecorded) const;
    static bool HasAnotherSize(const JobFile& file, const LinkReader::Links& links);
    bool AreLinksOnTheWay(const JobFile& file, const LinkReader::Links& links,
                          LinkReader::Links& rewrites) const;
    bool IsOfAnotherProject(const QString& target) const;
    void Adopt(JobFile& file, const QList<SyncServices::FileLink>& links, const FileStamp& source,
               const FileStamp& target, qint64 recordedAt) const;

    const JobState& m_job;
    JobControl& m_control;
    LinkReader& m_reader;
    const CopyIndex& m_copies;
};

} // namespace Halvern::Jobs
