// SPDX-License-Identifier: Apache-2.0

#include "Results.h"

#include <algorithm>

namespace Halvern::Jobs {

using SyncServices::FileMapping;

namespace {

QStringList LinkingFiles(const PlannedFile& file)
{
    QStringList files;
    for (const LinkPlace& place : file.linkedFrom)
        if (files.isEmpty() || files.last() != place.file)
            files.append(place.file);
    return files;
}

} // namespace

bool IsPluginProblem(const FileLink::Problem& problem)
{
    return !problem.plugin.isEmpty() || problem.kind == FileLink::ProblemKind::PluginMessage ||
           problem.kind == FileLink::ProblemKind::PluginFault ||
           problem.kind == FileLink::ProblemKind::Registration;
}

bool FileResult::PluginFailed() const
{
    return std::any_of(problems.begin(), problems.end(), IsPluginProblem);
}

bool FileResult::IsProblem() const
{
    switch (outcome) {
    case Outcome::Failed:
        return true;
    case Outcome::Skipped:
    case Outcome::Missing:
    case Outcome::Refused:
    case Outcome::Url:
    case Outcome::Orphaned:
    case Outcome::Pruned:
    case Outcome::NotDone:
        return PluginFailed();
    case Outcome::Copied:
    case Outcome::Moved:
    case Outcome::Replaced:
    case Outcome::Updated:
    case Outcome::Renamed:
    case Outcome::Kept:
    case Outcome::Left:
    case Outcome::Unchanged:
    case Outcome::InPlace:
    case Outcome::Locked:
        return !problems.isEmpty() || remark == Remark::LinksNotRewritten ||
               remark == Remark::RewritePending || remark == Remark::LinksNotRead ||
               remark == Remark::SourceStays;
    }
    return false;
}

FileResult ResultMaker::Make(const FileMapping& file)
{
    FileResult result;
    result.source = file.GetSourceFile();
    result.target = file.GetTargetFile();
    result.outcome = OutcomeOf(file, m_job);
    result.problems = m_sorter.Of(file, result.outcome);
    if (result.problems.isEmpty() || result.outcome != Outcome::Failed)
        result.remark = RemarkOf(file, result.outcome, m_job);
    result.sourceDeleted = DeletesSource(file, result.outcome, m_job);
    result.linksRewritten = m_job.modified.contains(result.target);
    const PlannedFile* planned = Planned(file);
    if (planned && result.outcome == Outcome::Missing)
        result.linkedFrom = LinkingFiles(*planned);
    return result;
}

QList<FileResult> ResultMaker::MakeAll()
{
    QList<FileResult> results;
    if (!m_job.files)
        return results;
    for (const auto& file : m_job.files->GetFiles())
        if (IsReported(*file, m_job))
            results.append(Make(*file));
    return results;
}

const PlannedFile* ResultMaker::Planned(const FileMapping& file) const
{
    const qsizetype place = m_places.value(&file, -1);
    return place < 0 ? nullptr : &m_plan.files.at(place);
}

FileResult AsPlanned(const PlannedFile& file)
{
    FileResult result;
    result.source = file.source;
    result.target = file.target;
    result.outcome = file.outcome;
    result.remark = file.remark;
    result.sourceDeleted = file.deletesSource;
    result.problems = file.problems;
    if (file.outcome == Outcome::Missing)
        result.linkedFrom = LinkingFiles(file);
    return result;
}

FileResult AsResult(const LeftOutItem& item)
{
    FileResult result;
    result.source = item.source;
    result.outcome = item.IsFailure() ? Outcome::Failed : Outcome::Skipped;
    result.remark = item.remark;
    return result;
}

Summary Summarize(const QList<FileResult>& files)
{
    Summary summary;
    for (const FileResult& file : files) {
        ++summary.counts[file.outcome];
        summary.filesWithProblems += file.IsProblem() ? 1 : 0;
        summary.pluginFailures += file.PluginFailed() ? 1 : 0;
    }
    return summary;
}

} // namespace Halvern::Jobs
