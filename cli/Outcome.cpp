// SPDX-License-Identifier: Apache-2.0

#include "Outcome.h"

namespace Halvern::Cli {

QString StatusName(FileStatus status)
{
    switch (status) {
    case FileStatus::Copied:
        return QStringLiteral("copied");
    case FileStatus::Moved:
        return QStringLiteral("moved");
    case FileStatus::Replaced:
        return QStringLiteral("replaced");
    case FileStatus::Renamed:
        return QStringLiteral("renamed");
    case FileStatus::Kept:
        return QStringLiteral("kept");
    case FileStatus::Unchanged:
        return QStringLiteral("unchanged");
    case FileStatus::InPlace:
        return QStringLiteral("in-place");
    case FileStatus::Skipped:
        return QStringLiteral("skipped");
    case FileStatus::Locked:
        return QStringLiteral("locked");
    case FileStatus::Missing:
        return QStringLiteral("missing");
    case FileStatus::Url:
        return QStringLiteral("url");
    case FileStatus::Failed:
        return QStringLiteral("failed");
    case FileStatus::NotDone:
        return QStringLiteral("not-done");
    }
    return {};
}

bool IsProblem(const FileOutcome& outcome)
{
    switch (outcome.status) {
    case FileStatus::Failed:
        return true;
    case FileStatus::Skipped:
    case FileStatus::Missing:
    case FileStatus::Url:
    case FileStatus::NotDone:
        return outcome.pluginFailed;
    case FileStatus::Copied:
    case FileStatus::Moved:
    case FileStatus::Replaced:
    case FileStatus::Renamed:
    case FileStatus::Kept:
    case FileStatus::Unchanged:
    case FileStatus::InPlace:
    case FileStatus::Locked:
        return !outcome.reason.isEmpty();
    }
    return false;
}

ExitCode ExitCodeOf(const FileOutcome& outcome)
{
    if (outcome.pluginFailed)
        return ExitCode::PluginOrDatabase;
    if (IsProblem(outcome))
        return ExitCode::Failed;
    if (outcome.status == FileStatus::Locked)
        return ExitCode::Locked;
    return outcome.status == FileStatus::Missing ? ExitCode::MissingLinks : ExitCode::Complete;
}

} // namespace Halvern::Cli
