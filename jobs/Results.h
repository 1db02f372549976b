// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobControl.h"
#include "JobFile.h"
#include "ProblemSorter.h"

#include "corsync/JobResult.h"

namespace Halvern::Jobs {

/// What became of the files of a job; handed to the observer as it comes, and again when there is
/// something else to say.
class Results
{
public:
    Results(const JobState& job, JobControl& control)
        : m_job(job), m_control(control), m_sorter(control.Problems())
    {}

    /// Tells the observer, unless it knows.
    void Tell(const JobFile& file);
    void TellRest();
    /// Of every file that counts, with what was left out at the end.
    QList<FileResult> MakeAll();
    QList<FileLink::Problem> ProblemsOfNoFile() const { return m_sorter.OfNoFile(); }

private:
    /// What was told about a file last.
    struct Told
    {
        Outcome outcome = Outcome::NotDone;
        Remark remark = Remark::None;
        qsizetype problems = -1;
        bool linksRewritten = false;
        bool sourceDeleted = false;
        SourceStays sourceStays = SourceStays::No;
        bool operator==(const Told&) const = default;
    };

    FileResult Make(const JobFile& file);
    QStringList HoldersOf(const JobFile& file);

    const JobState& m_job;
    JobControl& m_control;
    ProblemSorter m_sorter;
    QHash<const JobFile*, Told> m_told;
    /// The files that link each file, found when first asked for.
    QHash<const JobFile*, QStringList> m_holders;
};

/// Folders count only when one could not be made.
bool IsReported(const JobFile& file);
/// The outcome as it stands: that of a file whose turn has not come in a cancelled job is NotDone.
Outcome OutcomeNow(const JobFile& file, const JobState& job);
/// What executing leads to when nothing goes wrong.
FileResult AsPlanned(const PlannedFile& file);
FileResult AsResult(const LeftOutItem& item);
/// Copies whose source is gone.
QList<FileResult> OrphanResults(const JobState& job);
/// Counts; what concerns no file is left to the caller.
Summary Summarize(const QList<FileResult>& files);

} // namespace Halvern::Jobs
