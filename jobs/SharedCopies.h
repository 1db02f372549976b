// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CopyIndex.h"
#include "JobFile.h"

namespace Halvern::Jobs {

/// Copies of other projects that linked files of a job can do with: as they were made, from sources
/// that are as they were, and with links that lead where those of this project would.
class SharedCopies
{
public:
    SharedCopies(JobState& job, const CopyIndex& copies) : m_job(job), m_copies(copies) {}

    /// Gives the files the targets of such copies.
    void Use();

private:
    bool MayShare(const JobFile& file, const QHash<qsizetype, const CopyRecord*>& shared) const;
    bool MayBeLinked(qsizetype place, const QHash<qsizetype, const CopyRecord*>& shared) const;
    const CopyRecord* CopyElsewhere(const JobFile& file) const;

    JobState& m_job;
    const CopyIndex& m_copies;
    /// For each file those that link it.
    QHash<qsizetype, QList<qsizetype>> m_holders;
};

} // namespace Halvern::Jobs
