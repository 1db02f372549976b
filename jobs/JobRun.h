// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobControl.h"
#include "JobDatabase.h"
#include "Outcomes.h"

#include "filelink/FileLinkImporter.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::Jobs {

class ResultStream;

/// Drives an importer through its stages, with this library's own steps in between:
///
///     Plan      Initialize, ExtractFileLinks, AssignTargetPaths, MarkCollisions, MarkUpToDate,
///               these three once more when MarkForAnotherPlace finds files,
///               ResolveCollisions, SettleTargets: nothing is written
///     Execute   CopyFiles, RepathTargetFiles, IncludeRepathedInPlace, UpdateSyncDatabase
///     Finish    the importer ends, which records what was copied
///
/// A cancel ends either step at the next poll and makes the following ones do nothing.
class JobRun
{
public:
    JobRun(const ImportRequest& request, const std::shared_ptr<JobControl>& control);
    ~JobRun();
    JobRun(const JobRun&) = delete;
    JobRun& operator=(const JobRun&) = delete;

    /// Sources and target are checked. Throws JobError(SelectionRefused) when the module refuses
    /// them, and JobError(PlanNotMade).
    void Plan(const QStringList& sources, const QString& target);
    /// False when the job is cancelled.
    bool MayBegin();
    /// Requires a plan without conflicts that was not cancelled.
    void Execute(ResultStream& stream);
    void Finish();

    const JobState& State() const { return m_state; }
    /// What keeps the plan from being executed.
    const QList<Conflict>& Conflicts() const { return m_conflicts; }
    /// Why the database failed during this job; empty when it did not.
    QString DatabaseError() const { return m_database->FailureOfThisJob(); }

private:
    /// False when the job is cancelled, before the stage or by it.
    template <typename Stage>
    bool Run(Phase phase, qint64 total, Stage stage);
    void ConnectSignals();
    void RequireWholePlan() const;
    bool AssignTargets();
    bool AssignOtherTargets();
    bool MarkCollisions();
    bool CopyAndRepath();
    qint64 CountFilesToCopy() const;
    void IncludeRepathedInPlace();
    void RecordInterruptedRepath();

    JobState m_state;
    std::shared_ptr<JobControl> m_control;
    std::shared_ptr<JobDatabase> m_database;
    std::unique_ptr<FileLink::FileLinkImporter> m_importer;
    ResultStream* m_stream = nullptr;
    QList<Conflict> m_conflicts;
};

} // namespace Halvern::Jobs
