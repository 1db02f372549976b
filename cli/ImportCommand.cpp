// SPDX-License-Identifier: Apache-2.0

#include "ImportCommand.h"

#include "Console.h"
#include "Platform.h"
#include "ProgressLine.h"
#include "Report.h"
#include "Words.h"

#include "corsync/ImportJob.h"

#include <QtCore/QDir>

namespace Halvern::Cli {

namespace {

/// On a terminal, unless log lines would be written between.
bool WantsProgress(const ImportOptions& options, const CommonOptions& common)
{
    switch (options.progress) {
    case ProgressMode::Always:
        return true;
    case ProgressMode::Never:
        return false;
    case ProgressMode::Auto:
        return IsStandardErrorTerminal() && !common.quiet && common.log.verbosity == 0;
    }
    return false;
}

class ProgressShower : public Jobs::IJobObserver
{
public:
    void PhaseBegun(Jobs::Phase phase, qint64 total) override
    {
        m_line.Begin(WordOf(phase), total);
    }
    void Progressed(const Jobs::Progress& progress) override
    {
        m_line.Show(progress.files, progress.bytes);
    }

private:
    ProgressLine m_line{true};
};

void TellHowItEnded(const Jobs::Summary& summary, const ImportOptions& options, Console& console)
{
    if (summary.cancelled)
        console.Error(summary.executed ? QStringLiteral("cancelled; import again to go on")
                                       : QStringLiteral("cancelled; nothing was copied"));
    else if (options.dryRun && summary.conflicts == 0)
        console.Note(QStringLiteral("dry run; nothing was copied"));
}

ImportReport Import(const ImportOptions& options, const Jobs::Session& session,
                    Jobs::IJobObserver* observer, const Jobs::CancelToken& cancel)
{
    Jobs::ImportRequest request = options.request;
    request.sources = ExpandPatterns(request.sources);
    Jobs::ImportJob job(session, request, observer, &cancel);
    job.MakePlan();
    return {options.dryRun ? job.Preview() : job.Execute(),
            job.GetPlan().conflicts,
            {QDir::currentPath(), session.CloudFolder()}};
}

} // namespace

ExitCode RunImport(const ImportOptions& options, const CommonOptions& common,
                   const Jobs::CancelToken& cancel, Console& console)
{
    const Jobs::SessionUse use =
        options.dryRun ? Jobs::SessionUse::PlanOnly : Jobs::SessionUse::Import;
    const Jobs::Session session(Jobs::ResolveSettings(options.places, use), common.pluginPaths,
                                use);
    std::optional<ProgressShower> progress;
    if (WantsProgress(options, common))
        progress.emplace();
    const ImportReport report = Import(options, session, progress ? &*progress : nullptr, cancel);
    progress.reset();
    Print(report, console);
    TellHowItEnded(report.result.summary, options, console);
    return ExitCodeOf(report.result.summary);
}

} // namespace Halvern::Cli
