// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ConflictAnswers.h"
#include "CopyIndex.h"
#include "JobControl.h"
#include "JobFile.h"
#include "Layout.h"
#include "LinkReader.h"
#include "Placement.h"
#include "Settling.h"
#include "Targets.h"
#include "ThreeWays.h"

namespace Halvern::Jobs {

/// Decides what happens to each file of a job whose targets are assigned:
///
///     Placement    where an earlier import of the project has put a file it stays, and what
///                  another project has brought unchanged is used
///     Look         how source, copy and record relate
///     Settling     conflicts, other names
///
/// Nothing is written.
class Decisions
{
public:
    Decisions(JobState& job, JobControl& control, LinkReader& reader, Layout& layout,
              const CopyIndex& copies);

    /// False when the job was cancelled.
    bool Make(const Answers& answers);
    const QList<Conflict>& Conflicts() const { return m_conflicts; }

private:
    bool Look();
    void LookAt(JobFile& file);
    void TakeInPlace(JobFile& file) const;
    bool IsOfThisProject(const CopyRecord& record) const;
    void Decide(JobFile& file, Standing standing);
    void DecideTaken(JobFile& file, Standing standing);
    void NoteLinks();

    JobState& m_job;
    JobControl& m_control;
    Layout& m_layout;
    const CopyIndex& m_copies;
    const TargetKeys m_keys;
    const ThreeWays m_threeWays;
    ConflictAnswers m_answers;
    Placement m_placement;
    Standings m_standings;
    QList<Conflict> m_conflicts;
};

} // namespace Halvern::Jobs
