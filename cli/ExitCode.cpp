// SPDX-License-Identifier: Apache-2.0

#include "ExitCode.h"

#include <algorithm>

namespace Halvern::Cli {

namespace {

int Rank(ExitCode code)
{
    switch (code) {
    case ExitCode::Complete:
        return 0;
    case ExitCode::MissingLinks:
        return 1;
    case ExitCode::Locked:
        return 2;
    case ExitCode::Failed:
        return 3;
    case ExitCode::Refused:
        return 4;
    case ExitCode::PluginOrDatabase:
        return 5;
    case ExitCode::Collisions:
        return 6;
    case ExitCode::Cancelled:
        return 7;
    case ExitCode::SourceMissing:
        return 8;
    case ExitCode::Usage:
        return 9;
    }
    return 0;
}

} // namespace

ExitCode MostSerious(const QList<ExitCode>& codes)
{
    const auto worst = std::max_element(codes.begin(), codes.end(),
                                        [](ExitCode a, ExitCode b) { return Rank(a) < Rank(b); });
    return worst == codes.end() ? ExitCode::Complete : *worst;
}

bool HasBroken(const QList<Jobs::RegistrationFault>& faults)
{
    return std::any_of(faults.begin(), faults.end(),
                       [](const Jobs::RegistrationFault& fault) { return fault.isBroken; });
}

ExitCode ExitCodeOf(const Jobs::Summary& summary)
{
    const bool pluginFailed =
        summary.pluginFailures > 0 ||
        std::any_of(summary.problems.begin(), summary.problems.end(), Jobs::IsPluginProblem) ||
        HasBroken(summary.registrationFaults);
    QList<ExitCode> codes;
    if (summary.Count(Jobs::Outcome::Missing) > 0 || summary.linkedNoFiles > 0)
        codes.append(ExitCode::MissingLinks);
    if (summary.Count(Jobs::Outcome::Locked) > 0)
        codes.append(ExitCode::Locked);
    if (summary.filesWithProblems > 0 || !summary.problems.isEmpty() || !summary.findings.isEmpty())
        codes.append(ExitCode::Failed);
    if (summary.Count(Jobs::Outcome::Refused) > 0)
        codes.append(ExitCode::Refused);
    if (pluginFailed || !summary.databaseError.isEmpty())
        codes.append(ExitCode::PluginOrDatabase);
    if (summary.conflicts > 0)
        codes.append(ExitCode::Collisions);
    if (summary.cancelled)
        codes.append(ExitCode::Cancelled);
    return MostSerious(codes);
}

ExitCode ExitCodeOf(Jobs::JobErrorKind kind)
{
    switch (kind) {
    case Jobs::JobErrorKind::SettingsRefused:
    case Jobs::JobErrorKind::PluginFolderMissing:
    case Jobs::JobErrorKind::SourceRefused:
    case Jobs::JobErrorKind::TargetRefused:
    case Jobs::JobErrorKind::FolderMissing:
    case Jobs::JobErrorKind::PatternRefused:
    case Jobs::JobErrorKind::RestoreRefused:
        return ExitCode::Usage;
    case Jobs::JobErrorKind::SourceMissing:
    case Jobs::JobErrorKind::VersionMissing:
        return ExitCode::SourceMissing;
    case Jobs::JobErrorKind::DatabaseNotOpened:
    case Jobs::JobErrorKind::DatabaseDamaged:
        return ExitCode::PluginOrDatabase;
    case Jobs::JobErrorKind::NoCloudFolder:
    case Jobs::JobErrorKind::SessionTaken:
    case Jobs::JobErrorKind::SyncOff:
    case Jobs::JobErrorKind::SelectionRefused:
    case Jobs::JobErrorKind::PlanNotMade:
    case Jobs::JobErrorKind::RestoreFailed:
    case Jobs::JobErrorKind::WrongOrder:
        return ExitCode::Failed;
    }
    return ExitCode::Failed;
}

} // namespace Halvern::Cli
