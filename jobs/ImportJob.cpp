// SPDX-License-Identifier: Apache-2.0

#include "corsync/ImportJob.h"

#include "JobControl.h"
#include "JobRun.h"
#include "PlanBuilder.h"
#include "ResultStream.h"
#include "Results.h"
#include "Selection.h"

#include "syncservices/FolderManager.h"
#include "syncservices/SyncManager.h"

namespace Halvern::Jobs {

using SyncFolderManagerLib::FolderManager;
using SyncServices::SyncManager;

namespace {

void RequireSync()
{
    if (!FolderManager::GetInstance()->IsLoggedIn())
        throw JobError(JobErrorKind::SyncOff,
                       QStringLiteral("not logged in, the settings say (loggedIn)"));
    if (!SyncManager::GetInstance()->IsCloudCacheFolderSyncEnabled())
        throw JobError(JobErrorKind::SyncOff,
                       QStringLiteral("sync of the cloud cache folder is off, the settings say "
                                      "(cloudCacheFolderSyncEnabled)"));
}

void Require(bool order, const QString& text)
{
    if (!order)
        throw JobError(JobErrorKind::WrongOrder, text);
}

} // namespace

struct ImportJob::State
{
    const Session& session;
    const ImportRequest request;
    std::shared_ptr<JobControl> control;
    /// From planning until the end of the execution, which ends the importer.
    JobRun run;
    Plan plan;
    PlaceInPlan places;
    bool planned = false;
    bool executed = false;

    State(const Session& owner, ImportRequest wanted, IJobObserver* observer,
          const CancelToken* cancel)
        : session(owner), request(std::move(wanted)),
          control(std::make_shared<JobControl>(observer, cancel)), run(request, control)
    {}

    void WritePlan();
    JobResult Result(QList<FileResult> files, QList<FileLink::Problem> problems) const;
};

void ImportJob::State::WritePlan()
{
    plan.conflicts = run.Conflicts();
    plan.complete = !run.State().cancelled;
    ProblemSorter sorter(control->Problems());
    if (run.State().files)
        plan.files = DescribeFiles(run.State(), sorter, places);
    plan.problems = sorter.OfNoFile();
}

JobResult ImportJob::State::Result(QList<FileResult> files, QList<FileLink::Problem> problems) const
{
    if (!plan.conflicts.isEmpty())
        files.clear();
    else
        for (const LeftOutItem& item : plan.leftOut)
            files.append(AsResult(item));
    JobResult result{std::move(files), {}};
    result.summary = Summarize(result.files);
    result.summary.problems = std::move(problems);
    result.summary.registrationFaults = ListRegistrationFaults(session);
    result.summary.conflicts = plan.conflicts.size();
    result.summary.databaseError = run.DatabaseError();
    result.summary.cancelled = run.State().cancelled;
    result.summary.executed = run.State().executed;
    return result;
}

ImportJob::ImportJob(const Session& session, ImportRequest request, IJobObserver* observer,
                     const CancelToken* cancel)
    : m_state(std::make_unique<State>(session, std::move(request), observer, cancel))
{}

ImportJob::~ImportJob() = default;

const Plan& ImportJob::MakePlan()
{
    State& state = *m_state;
    Require(!state.planned, QStringLiteral("the job has a plan already"));
    RequireSync();
    const QStringList sources = CheckedSources(state.request.sources);
    const QString target = CheckedTarget(state.request.target);
    state.plan.leftOut = LeftOut(sources);
    state.run.Plan(sources, target);
    state.planned = true;
    state.WritePlan();
    state.control->Rethrow();
    return state.plan;
}

const Plan& ImportJob::GetPlan() const
{
    return m_state->plan;
}

JobResult ImportJob::Preview() const
{
    Require(m_state->planned, QStringLiteral("the job has no plan yet"));
    QList<FileResult> files;
    files.reserve(m_state->plan.files.size());
    for (const PlannedFile& file : m_state->plan.files)
        files.append(AsPlanned(file));
    return m_state->Result(std::move(files), m_state->plan.problems);
}

JobResult ImportJob::Execute()
{
    State& state = *m_state;
    Require(state.planned, QStringLiteral("the job has no plan yet"));
    Require(!state.executed, QStringLiteral("the job was executed already"));
    Require(state.session.Use() == SessionUse::Import,
            QStringLiteral("the session is for plans only"));
    state.executed = true;
    ResultMaker maker(state.run.State(), state.control->Problems(), state.plan, state.places);
    if (state.plan.conflicts.isEmpty() && state.run.MayBegin()) {
        ResultStream stream(*state.control, maker, state.run.State());
        state.run.Execute(stream);
    }
    // What the importer does at its end may fail, too.
    state.run.Finish();
    QList<FileResult> results = maker.MakeAll();
    JobResult result = state.Result(std::move(results), maker.ProblemsOfNoFile());
    state.control->Rethrow();
    return result;
}

} // namespace Halvern::Jobs
