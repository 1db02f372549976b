// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Boundary.h"
#include "CopyIndex.h"
#include "JobControl.h"
#include "JobFile.h"
#include "LinkReader.h"
#include "RealFiles.h"

namespace Halvern::Jobs {

/// Adds to a selection every file that its files link, directly or through others, in the order in
/// which they are found, breadth first.
///
/// A file is known by its path, letter by letter, unless the disk says that two spellings name one
/// file. What is missing, refused or no file becomes part of the job as well, with its outcome.
class Closure
{
public:
    Closure(JobState& job, JobControl& control, LinkReader& reader, Boundary& boundary,
            const CopyIndex& copies);

    /// False when the job was cancelled.
    bool Find();

private:
    void CheckGivenLinks();
    bool IsWhereItWasJudged(const JobFile& file);
    bool IsOpened(qsizetype place, qsizetype selected) const;
    void TakeLinks(JobFile& file);
    bool Restore(JobFile& file) const;
    void RecallLinks(JobFile& file) const;
    void Follow(qsizetype holder);
    qsizetype MemberFor(const QString& path);
    void TakeMoved(JobFile& file) const;
    JobFile Linked(const QString& path);
    void FindOtherHolders();
    qsizetype GivenFile(const QString& link, const QString& holder) const;
    const LeftOutItem* ExcludedBy(const QString& path) const;

    JobState& m_job;
    JobControl& m_control;
    LinkReader& m_reader;
    Boundary& m_boundary;
    RealFiles m_realFiles;
    const CopyIndex& m_copies;
    QHash<QString, qsizetype> m_excluded;
};

} // namespace Halvern::Jobs
