// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ConflictAnswers.h"
#include "CopyIndex.h"
#include "JobFile.h"
#include "Targets.h"

#include <QtCore/QHash>

namespace Halvern::Jobs {

/// How the files of a job relate to what stands at their targets.
using Standings = QHash<const JobFile*, Standing>;

/// Settles who gets which target: gives other names to files that may have one, and finds the
/// conflicts that a person has to settle.
class Settling
{
public:
    Settling(JobState& job, const CopyIndex& copies, const TargetKeys& keys,
             const ConflictAnswers& answers, const Standings& standings)
        : m_job(job), m_copies(copies), m_answers(answers), m_standings(standings), m_owners(keys)
    {}

    /// Requires what is to be done with each file.
    void Settle();
    const QList<Conflict>& Conflicts() const { return m_conflicts; }

private:
    void SettleFolder(JobFile& file);
    void SettleCopy(JobFile& file);
    bool GiveFreeName(JobFile& file);
    QString FreeName(const QString& path) const;
    QList<ConflictAnswer> AnswersTo(const JobFile& file, ConflictKind kind) const;
    void Clash(const JobFile& file, ConflictKind kind, const JobFile* other = nullptr);

    JobState& m_job;
    const CopyIndex& m_copies;
    const ConflictAnswers& m_answers;
    const Standings& m_standings;
    TargetOwners m_owners;
    /// For each name that several want the number that the last one has got.
    QHash<QString, int> m_numbers;
    QList<Conflict> m_conflicts;
};

} // namespace Halvern::Jobs
