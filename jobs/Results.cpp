// SPDX-License-Identifier: Apache-2.0

#include "Results.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Jobs {

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
    case Outcome::Orphaned:
        return remark == Remark::NotKept;
    case Outcome::Skipped:
        return remark == Remark::LinksNotRead || PluginFailed();
    case Outcome::Missing:
    case Outcome::Refused:
    case Outcome::Url:
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
               remark == Remark::TargetReadOnly || remark == Remark::LinkEmpty ||
               remark == Remark::LinkTooLong ||
               (sourceStays != SourceStays::No && outcome != Outcome::Locked);
    }
    return false;
}

bool IsReported(const JobFile& file)
{
    return !file.isDropped && (!file.isFolder || file.outcome == Outcome::Failed);
}

void TellOfNewLinks(Outcome& outcome, Remark& remark)
{
    if ((outcome != Outcome::Unchanged && outcome != Outcome::InPlace) || remark != Remark::None)
        return;
    outcome = Outcome::Updated;
    remark = Remark::LinksRewritten;
}

Outcome OutcomeNow(const JobFile& file, const JobState& job)
{
    const bool isAwaited = file.deed == Deed::Copy || file.outcome == Outcome::NotDone;
    return job.cancelled && isAwaited ? Outcome::NotDone : file.outcome;
}

QStringList Results::HoldersOf(const JobFile& file)
{
    if (m_holders.isEmpty())
        for (const JobFile& holder : m_job.files)
            for (const JobLink& link : holder.links) {
                if (link.member < 0)
                    continue;
                QStringList& holders = m_holders[&m_job.files.At(link.member)];
                if (holders.isEmpty() || holders.last() != holder.source)
                    holders.append(holder.source);
            }
    return m_holders.value(&file);
}

FileResult Results::Make(const JobFile& file)
{
    FileResult result;
    result.source = file.source;
    result.target = file.target;
    result.outcome = OutcomeNow(file, m_job);
    result.problems = m_sorter.Of(file);
    result.remark = file.remark;
    if (m_job.cancelled && file.deed == Deed::Relink)
        result.remark = Remark::LinksNotRewritten;
    result.detail = file.detail;
    result.sourceDeleted = file.sourceDeleted;
    result.sourceStays = file.sourceStays;
    result.staysFor = file.staysFor;
    result.linksRewritten = file.linksRewritten;
    if (file.linksRewritten)
        TellOfNewLinks(result.outcome, result.remark);
    result.outside = file.outside;
    result.isUnknownFormat = file.isUnknownFormat;
    if (result.outcome == Outcome::Missing || result.outcome == Outcome::Refused ||
        (result.outcome == Outcome::Skipped && !file.isSelected))
        result.linkedFrom = HoldersOf(file);
    return result;
}

void Results::Tell(const JobFile& file)
{
    if (!m_control.HasObserver() || !IsReported(file))
        return;
    const FileResult result = Make(file);
    const Told now{result.outcome,        result.remark,        result.problems.size(),
                   result.linksRewritten, result.sourceDeleted, result.sourceStays};
    Told& told = m_told[&file];
    if (now == told)
        return;
    told = now;
    m_control.Tell([&](IJobObserver& observer) { observer.FileDone(result); });
}

void Results::TellRest()
{
    for (const JobFile& file : m_job.files)
        Tell(file);
}

QList<FileResult> Results::MakeAll()
{
    QList<FileResult> results;
    for (const JobFile& file : m_job.files)
        if (IsReported(file))
            results.append(Make(file));
    return results;
}

QList<FileResult> OrphanResults(const JobState& job)
{
    QList<FileResult> results;
    const QSet<QString> pruned(job.pruned.begin(), job.pruned.end());
    for (const auto& [orphan, isStillLinked] : job.orphans) {
        FileResult result;
        result.source = orphan.source;
        result.target = orphan.target;
        result.outcome = pruned.contains(orphan.target) ? Outcome::Pruned : Outcome::Orphaned;
        if (isStillLinked)
            result.remark = Remark::StillLinked;
        if (job.notPruned.contains(orphan.target)) {
            result.detail = job.notPruned.value(orphan.target);
            result.remark = result.detail.isEmpty() ? Remark::ChangedOrphan : Remark::NotKept;
        }
        results.append(result);
    }
    return results;
}

FileResult AsPlanned(const PlannedFile& file)
{
    FileResult result;
    result.source = file.source;
    result.target = file.target;
    result.outcome = file.outcome;
    result.remark = file.remark;
    result.sourceDeleted = file.deletesSource;
    result.sourceStays = file.sourceStays;
    result.staysFor = file.staysFor;
    result.problems = file.problems;
    result.detail = file.detail;
    result.linksRewritten = file.rewritesLinks;
    result.outside = file.outside;
    result.isUnknownFormat = file.isUnknownFormat;
    if (file.outcome == Outcome::Missing || file.outcome == Outcome::Refused ||
        (file.outcome == Outcome::Skipped && file.origin != Origin::Selected))
        result.linkedFrom = LinkingFiles(file);
    return result;
}

FileResult AsResult(const LeftOutItem& item)
{
    FileResult result;
    result.source = item.source;
    result.outcome = item.IsFailure() ? Outcome::Failed : Outcome::Skipped;
    result.remark = item.remark;
    result.detail = item.detail;
    return result;
}

namespace {

/// Other files link it, as if it were a file.
bool IsLinkedNoFile(const FileResult& file)
{
    return file.outcome == Outcome::Skipped && !file.linkedFrom.isEmpty() &&
           (file.remark == Remark::LinkedFolder || file.remark == Remark::NoFile);
}

} // namespace

Summary Summarize(const QList<FileResult>& files)
{
    Summary summary;
    for (const FileResult& file : files) {
        ++summary.counts[file.outcome];
        summary.filesWithProblems += file.IsProblem() ? 1 : 0;
        summary.pluginFailures += file.PluginFailed() ? 1 : 0;
        summary.linkedNoFiles += IsLinkedNoFile(file) ? 1 : 0;
        summary.outside += file.outside ? 1 : 0;
        if (file.isUnknownFormat)
            ++summary.unknownFormats[QFileInfo(file.source).suffix().toLower()];
    }
    return summary;
}

} // namespace Halvern::Jobs
