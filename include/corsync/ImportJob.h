// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/CancelToken.h"
#include "corsync/Export.h"
#include "corsync/ImportRequest.h"
#include "corsync/JobObserver.h"
#include "corsync/JobResult.h"
#include "corsync/Plan.h"
#include "corsync/Session.h"

#include <QtCore/QHash>

#include <memory>

namespace Halvern::Jobs {

/// Imports files into the cloud cache folder, in two steps with a look at the plan between:
///
///     ImportJob job(session, request);
///     const Plan& plan = job.MakePlan();      nothing is written
///     if (plan.conflicts.isEmpty())
///         report(job.Execute());              copies, rewrites links, records
///
/// A job serves one request, on the thread of its session, which outlives it. Failures of single
/// files are part of the result and stop nothing; a cancel ends either step before the next file,
/// or in the middle of a large one, which is then not done. Nothing that was done is undone, and
/// importing the same again goes on where it ended.
class CORSYNCJOBS_EXPORT ImportJob
{
public:
    /// Observer and cancel token may be null; otherwise they outlive the job.
    ImportJob(const Session& session, ImportRequest request, IJobObserver* observer = nullptr,
              const CancelToken* cancel = nullptr);
    ~ImportJob();
    ImportJob(const ImportJob&) = delete;
    ImportJob& operator=(const ImportJob&) = delete;

    /// Finds out what is to be done. Nothing is written anywhere. Throws JobError: SyncOff,
    /// SourceMissing, SourceRefused, TargetRefused, FolderMissing, PatternRefused,
    /// SelectionRefused, PlanNotMade, DatabaseNotOpened; WrongOrder when called twice, also after
    /// it threw: the answer to that is another job. The plan is the job's; Resolve changes it.
    const Plan& MakePlan();
    /// Settles conflicts of the plan, each by the source of the file, and makes the plan anew.
    /// Conflicts that are not named stay. Requires a plan that was not executed.
    const Plan& Resolve(const QHash<QString, ConflictAnswer>& answers);
    /// The plan as MakePlan or Resolve made it last; empty before, and when MakePlan threw a
    /// JobError.
    const Plan& GetPlan() const;
    /// What Execute will answer when nothing goes wrong and nobody cancels. Requires a plan.
    JobResult Preview() const;
    /// Does what the plan says, unless there are conflicts or the job was cancelled, and records
    /// it. Throws JobError(WrongOrder) without a plan, when called twice, and in a session that is
    /// for plans only.
    JobResult Execute();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace Halvern::Jobs
