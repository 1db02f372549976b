// SPDX-License-Identifier: Apache-2.0

#include "ImportCommand.h"

#include "Console.h"
#include "ImportJob.h"
#include "JobOutcomes.h"
#include "Platform.h"
#include "ProgressLine.h"
#include "Report.h"
#include "Selection.h"
#include "Session.h"
#include "Settings.h"

#include "syncservices/FolderManager.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QDir>

#include <optional>

namespace Halvern::Cli {

using SyncFolderManagerLib::FolderManager;
using SyncServices::SyncManager;

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

void RequireSync()
{
    if (!FolderManager::GetInstance()->IsLoggedIn())
        throw CommandError(ExitCode::Failed,
                           QStringLiteral("not logged in, the settings say (loggedIn)"));
    if (!SyncManager::GetInstance()->IsCloudCacheFolderSyncEnabled())
        throw CommandError(ExitCode::Failed,
                           QStringLiteral("sync of the cloud cache folder is off, the settings say "
                                          "(cloudCacheFolderSyncEnabled)"));
}

void TellHowItEnded(const ImportReport& report, const ImportJob& job, Console& console)
{
    if (report.cancelled)
        console.Error(job.WasExecuted() ? QStringLiteral("cancelled; import again to go on")
                                        : QStringLiteral("cancelled; nothing was copied"));
    else if (job.GetOptions().dryRun && report.conflicts.isEmpty())
        console.Note(QStringLiteral("dry run; nothing was copied"));
}

ImportReport Import(const ImportOptions& options, const LogSetup& log, ImportJob& job)
{
    const QStringList sources = CheckedSources(ExpandPatterns(options.sources));
    // Asked before anything is moved away.
    const QList<FileOutcome> leftOut = LeftOut(sources);
    job.Plan(sources, CheckedTarget(options.to));
    if (!options.dryRun)
        job.Execute();
    job.Finish();
    ImportReport report;
    report.conflicts = job.Conflicts();
    report.databaseError = job.DatabaseError();
    report.folders = {QDir::currentPath(),
                      FolderManager::GetInstance()->GetCloudCacheFolderPath(false)};
    Describe(job, log.Records(), report);
    report.files.append(leftOut);
    // With conflicts only they are of interest: of the files nothing was done.
    if (!report.conflicts.isEmpty())
        report.files.clear();
    return report;
}

} // namespace

ExitCode RunImport(const ImportOptions& options, const CommonOptions& common, const LogSetup& log,
                   Console& console)
{
    const SyncServices::ServicesSettings settings = ImportSettings(options);
    std::optional<FolderCleanup> cleanup;
    if (options.dryRun)
        cleanup.emplace(settings.cloudCacheFolder);
    const Session session(settings, common.pluginPaths);
    RequireSync();
    ProgressLine progress(WantsProgress(options, common));
    ImportJob job(options, progress);
    const ImportReport report = Import(options, log, job);
    Print(report, console);
    TellHowItEnded(report, job, console);
    return report.Result();
}

} // namespace Halvern::Cli
