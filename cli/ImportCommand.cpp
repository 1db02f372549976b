// SPDX-License-Identifier: Apache-2.0

#include "ImportCommand.h"

#include "AskConflicts.h"
#include "Console.h"
#include "JobProgress.h"
#include "Platform.h"
#include "Report.h"
#include "Sessions.h"
#include "Streams.h"
#include "TerminalInput.h"

#include "corsync/ImportJob.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

namespace Halvern::Cli {

namespace {

/// Nobody is there to answer, and a script that waits for an answer never ends.
void RequireSomebodyToAsk(const ImportOptions& options)
{
    if (options.asks && !(IsStandardInputTerminal() && IsStandardErrorTerminal()))
        throw UsageError(QStringLiteral("--on-conflict ask needs a terminal as standard input and "
                                        "standard error; choose stop, keep, replace or rename"));
}

void TellHowItEnded(const Jobs::Summary& summary, const ImportOptions& options, Console& console)
{
    if (summary.cancelled)
        console.Error(summary.executed ? QStringLiteral("cancelled; import again to go on")
                                       : QStringLiteral("cancelled; nothing was copied"));
    else if (options.dryRun && summary.conflicts == 0 && summary.findings.isEmpty())
        console.Note(QStringLiteral("dry run; nothing was copied"));
}

/// One import as the command runs it.
class Import
{
public:
    Import(const ImportOptions& options, const CommonOptions& common,
           const Jobs::CancelToken& cancel, Console& console)
        : m_options(options), m_common(common), m_cancel(cancel), m_console(console)
    {}

    ImportReport Run(const Jobs::Session& session);

private:
    void Ask(Jobs::ImportJob& job, JobProgress& progress);

    const ImportOptions& m_options;
    const CommonOptions& m_common;
    const Jobs::CancelToken& m_cancel;
    Console& m_console;
    ReportFolders m_folders;
};

ImportReport Import::Run(const Jobs::Session& session)
{
    m_folders = {QDir::currentPath(), session.CloudFolder()};
    Jobs::ImportRequest request = m_options.request;
    request.sources = ExpandPatterns(request.sources);
    request.commandLine = QCoreApplication::arguments();
    JobProgress progress(WantsProgress(m_options.progress, m_common), m_console);
    Jobs::ImportJob job(session, request, &progress, &m_cancel);
    job.MakePlan();
    if (m_options.asks)
        Ask(job, progress);
    ImportReport report{m_options.dryRun ? job.Preview() : job.Execute(), job.GetPlan().conflicts,
                        m_folders, m_common.log.verbosity > 0};
    // While a question waits the job does not look.
    report.result.summary.cancelled |= !report.conflicts.isEmpty() && m_cancel.IsCancelled();
    job.NoteExitCode(int(ExitCodeOf(report.result.summary)));
    return report;
}

/// Settled conflicts may uncover others.
void Import::Ask(Jobs::ImportJob& job, JobProgress& progress)
{
    TerminalInput input(m_cancel);
    const Person person{[&](const QString& text) { m_console.WriteError(text); },
                        [&] { return input.ReadLine(); }};
    ConflictAnswers answered;
    while (!m_cancel.IsCancelled()) {
        progress.Hide();
        const std::optional<ConflictAnswers> answers =
            AskConflicts(job.GetPlan().conflicts, answered, m_folders, person);
        if (!answers || answers->isEmpty())
            return;
        answered.insert(*answers);
        job.Resolve(answered);
    }
}

} // namespace

ExitCode RunImport(const ImportOptions& options, const CommonOptions& common,
                   const Jobs::CancelToken& cancel, Console& console)
{
    RequireSomebodyToAsk(options);
    const Jobs::SessionUse use =
        options.dryRun ? Jobs::SessionUse::PlanOnly : Jobs::SessionUse::Import;
    const Jobs::Session session = OpenSession(options.places, common, use);
    const ImportReport report = Import(options, common, cancel, console).Run(session);
    Print(report, console);
    TellHowItEnded(report.result.summary, options, console);
    return ExitCodeOf(report.result.summary);
}

} // namespace Halvern::Cli
