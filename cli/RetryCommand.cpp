// SPDX-License-Identifier: Apache-2.0

#include "RetryCommand.h"

#include "Console.h"
#include "JobProgress.h"
#include "Report.h"
#include "Sessions.h"

#include "corsync/Retry.h"

#include <QtCore/QDir>

namespace Halvern::Cli {

namespace {

bool HasNothingToTell(const Jobs::JobResult& result)
{
    return result.files.isEmpty() && ExitCodeOf(result.summary) == ExitCode::Complete;
}

Jobs::JobResult Retry(const RetryOptions& options, const CommonOptions& common,
                      const Jobs::Session& session, const Jobs::CancelToken& cancel,
                      Console& console)
{
    JobProgress progress(WantsProgress(options.progress, common), console);
    return Jobs::RetryRewrites(session, options.folder, &progress, &cancel);
}

} // namespace

ExitCode RunRetry(const RetryOptions& options, const CommonOptions& common,
                  const Jobs::CancelToken& cancel, Console& console)
{
    constexpr Jobs::SessionUse Use = Jobs::SessionUse::Import;
    const Jobs::Session session = OpenSession(options.places, common, Use);
    ImportReport report;
    report.result = Retry(options, common, session, cancel, console);
    report.folders = {QDir::currentPath(), session.CloudFolder()};
    report.isVerbose = common.log.verbosity > 0;
    Print(report, console);
    if (report.result.summary.cancelled)
        console.Error(QStringLiteral("cancelled; retry again to go on"));
    else if (HasNothingToTell(report.result))
        console.Note(QStringLiteral("no copy has links that are still to be rewritten"));
    return ExitCodeOf(report.result.summary);
}

} // namespace Halvern::Cli
