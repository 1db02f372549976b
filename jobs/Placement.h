// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ConflictAnswers.h"
#include "CopyIndex.h"
#include "Groups.h"
#include "JobFile.h"
#include "Layout.h"
#include "Targets.h"
#include "ThreeWays.h"

#include <QtCore/QHash>

namespace Halvern::Jobs {

/// Where files go instead of where the layout has put them: where an earlier import of the project
/// has put them, and elsewhere when something stands in the way of files that the layout wants at
/// exactly their targets.
class Placement
{
public:
    Placement(JobState& job, Layout& layout, const CopyIndex& copies, const TargetKeys& keys,
              const ThreeWays& threeWays, const ConflictAnswers& answers)
        : m_job(job), m_layout(layout), m_copies(copies), m_keys(keys), m_threeWays(threeWays),
          m_answers(answers)
    {}

    /// Requires the targets of the layout. False when the job was cancelled.
    bool Find();

private:
    void ByRecords();
    bool Otherwise();
    QList<qsizetype> FindStuck();
    const CopyRecord* StandingCopyOf(const JobFile& file) const;
    QString PlaceBesideOthers(const JobFile& file, const QList<qsizetype>& group) const;
    QString AsideTargetOf(const JobFile& file, const QList<qsizetype>& group) const;
    bool StaysAside(const Groups& groups, qsizetype stuck);
    bool IsStuck(const JobFile& file, Standing standing) const;

    JobState& m_job;
    Layout& m_layout;
    const CopyIndex& m_copies;
    const TargetKeys& m_keys;
    const ThreeWays& m_threeWays;
    const ConflictAnswers& m_answers;
    /// Of files that must stay beside each other, and that an earlier import has put elsewhere.
    QHash<qsizetype, QString> m_asideTargets;
};

} // namespace Halvern::Jobs
