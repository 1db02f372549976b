// SPDX-License-Identifier: Apache-2.0

#include "corsync/ImportJob.h"

#include "JobControl.h"
#include "JobRun.h"
#include "Paths.h"
#include "PlanBuilder.h"
#include "Results.h"
#include "Selection.h"

#include <QtCore/QSet>

#include <algorithm>
#include <utility>

namespace Halvern::Jobs {

namespace {

void Require(bool order, const QString& text)
{
    if (!order)
        throw JobError(JobErrorKind::WrongOrder, text);
}

/// It is linked as well, and the line about that says the same.
bool HasLine(const LeftOutItem& item, const JobState& job)
{
    const qsizetype place = job.files.Find(item.source);
    if (place < 0 || !IsReported(job.files.At(place)))
        return false;
    const JobFile& file = job.files.At(place);
    return item.IsFailure() ? file.outcome == Outcome::Failed : file.outcome == Outcome::Skipped;
}

/// What is linked as well has its line among the files.
void AddLeftOut(QList<FileResult>& files, const QList<LeftOutItem>& items, const JobState& job)
{
    QSet<QString> told;
    for (const FileResult& file : std::as_const(files))
        told.insert(file.source);
    for (const LeftOutItem& item : items)
        if (!HasLine(item, job) && (item.IsFailure() || !told.contains(item.source)))
            files.append(AsResult(item));
}

/// What the summary says of the database is not said again.
QList<FileLink::Problem> WithoutDatabase(QList<FileLink::Problem> problems,
                                         const QString& databaseError)
{
    if (!databaseError.isEmpty())
        problems.removeIf([](const FileLink::Problem& problem) {
            return problem.kind == FileLink::ProblemKind::NotRecorded && problem.file.isEmpty();
        });
    return problems;
}

} // namespace

struct ImportJob::State
{
    const Session& session;
    const ImportRequest request;
    std::shared_ptr<JobControl> control;
    JobRun run;
    Results results;
    Plan plan;
    bool begun = false;
    bool planned = false;
    bool executed = false;

    State(const Session& owner, ImportRequest wanted, IJobObserver* observer,
          const CancelToken* cancel)
        : session(owner), request(std::move(wanted)),
          control(std::make_shared<JobControl>(observer, cancel)), run(request, control),
          results(run.State(), *control)
    {}

    QStringList SourcesToTake(QList<LeftOutItem>& gone) const;
    void WritePlan();
    bool MayExecute() const { return plan.conflicts.isEmpty() && plan.findings.isEmpty(); }
    JobResult Result(QList<FileResult> files, QList<FileLink::Problem> problems) const;
};

/// A move that did not come to its end is completed by the same command, although some of its
/// sources are gone.
QStringList ImportJob::State::SourcesToTake(QList<LeftOutItem>& gone) const
{
    if (!request.move || request.sources.isEmpty())
        return request.sources;
    QString target;
    QStringList sources;
    for (const QString& source : request.sources) {
        const QString path = AbsolutePath(source);
        const bool exists = ExistsOnDisk(path);
        if (!exists && target.isEmpty())
            target = CheckedTarget(request.target);
        const QString place = exists ? QString() : run.MovedTo(path, target);
        const auto isSame = [&](const LeftOutItem& item) { return item.source == path; };
        if (place.isEmpty())
            sources.append(source);
        else if (std::none_of(gone.begin(), gone.end(), isSame))
            gone.append({path, Remark::MovedEarlier, place});
    }
    return sources;
}

void ImportJob::State::WritePlan()
{
    plan.conflicts = run.Conflicts();
    plan.findings = run.Findings();
    plan.complete = !run.State().cancelled;
    plan.leftOut = run.State().leftOut;
    ProblemSorter sorter(control->Problems());
    plan.files = DescribeFiles(run.State(), sorter);
    plan.problems = sorter.OfNoFile();
}

JobResult ImportJob::State::Result(QList<FileResult> files, QList<FileLink::Problem> problems) const
{
    if (!MayExecute()) {
        files.clear();
    } else {
        files += OrphanResults(run.State());
        AddLeftOut(files, plan.leftOut, run.State());
    }
    JobResult result{std::move(files), {}};
    result.summary = Summarize(result.files);
    result.summary.databaseError = run.DatabaseError();
    result.summary.problems = WithoutDatabase(std::move(problems), result.summary.databaseError);
    result.summary.registrationFaults = ListRegistrationFaults(session);
    result.summary.warnings = session.Warnings();
    result.summary.conflicts = plan.conflicts.size();
    result.summary.findings = plan.findings;
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
    Require(!state.begun, QStringLiteral("the job has a plan already"));
    state.begun = true;
    RequireSync();
    RequirePatterns(state.request.exclude);
    RequireFolders(state.request.within);
    QList<LeftOutItem> gone;
    const Sources sources = CheckedSources(state.SourcesToTake(gone));
    const QString target = CheckedTarget(state.request.target);
    const QList<RegistrationFault> faults = ListRegistrationFaults(state.session);
    state.run.State().hasBrokenPlugins =
        std::any_of(faults.begin(), faults.end(),
                    [](const RegistrationFault& fault) { return fault.isBroken; });
    state.run.Plan(sources, gone, target);
    state.planned = true;
    state.WritePlan();
    state.control->Rethrow();
    return state.plan;
}

const Plan& ImportJob::Resolve(const QHash<QString, ConflictAnswer>& answers)
{
    State& state = *m_state;
    Require(state.planned, QStringLiteral("the job has no plan yet"));
    Require(!state.executed, QStringLiteral("the job was executed already"));
    if (!state.plan.complete)
        return state.plan;
    state.run.Decide(answers);
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
    if (state.MayExecute() && state.run.MayBegin())
        state.run.Execute(state.results);
    QList<FileResult> results = state.results.MakeAll();
    JobResult result = state.Result(std::move(results), state.results.ProblemsOfNoFile());
    state.control->Rethrow();
    return result;
}

} // namespace Halvern::Jobs
