// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Outcomes.h"
#include "PlanBuilder.h"
#include "ProblemSorter.h"

#include "corsync/JobResult.h"

namespace Halvern::Jobs {

/// Tells what became of single files of a job that is being executed.
class ResultMaker
{
public:
    ResultMaker(const JobState& job, const ProblemBook& problems, const Plan& plan,
                const PlaceInPlan& places)
        : m_job(job), m_sorter(problems), m_plan(plan), m_places(places)
    {}

    /// Of every file that counts; empty when the selection was not read.
    QList<FileResult> MakeAll();
    FileResult Make(const SyncServices::FileMapping& file);
    /// What the plan says about the file; null for folders.
    const PlannedFile* Planned(const SyncServices::FileMapping& file) const;
    QList<FileLink::Problem> ProblemsOfNoFile() const { return m_sorter.OfNoFile(); }

private:
    const JobState& m_job;
    ProblemSorter m_sorter;
    const Plan& m_plan;
    const PlaceInPlan& m_places;
};

/// What executing leads to when nothing goes wrong.
FileResult AsPlanned(const PlannedFile& file);
FileResult AsResult(const LeftOutItem& item);
/// Counts; what concerns no file is left to the caller.
Summary Summarize(const QList<FileResult>& files);

} // namespace Halvern::Jobs
