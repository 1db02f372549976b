// SPDX-License-Identifier: Apache-2.0

#include "Run.h"

#include "Cancellation.h"
#include "Console.h"
#include "DoctorCommand.h"
#include "EarlyEnd.h"
#include "ImportCommand.h"
#include "LinksCommand.h"
#include "Logging.h"
#include "Options.h"
#include "PluginsCommand.h"
#include "RestoreCommand.h"
#include "RetryCommand.h"
#include "VersionsCommand.h"

namespace Halvern::Cli {

namespace {

/// What cannot be cancelled ends with Ctrl-C as any program does.
ExitCode RunCommand(const Options& options, Console& console)
{
    const auto run = [&](const auto& command) {
        using Command = std::decay_t<decltype(command)>;
        if constexpr (std::is_same_v<Command, ImportOptions>)
            return RunImport(command, options.common, WatchForCancel(), console);
        else if constexpr (std::is_same_v<Command, LinksOptions>)
            return RunLinks(command, options.common, WatchForCancel(), console);
        else if constexpr (std::is_same_v<Command, RetryOptions>)
            return RunRetry(command, options.common, WatchForCancel(), console);
        else if constexpr (std::is_same_v<Command, DoctorOptions>)
            return RunDoctor(command, options.common, WatchForCancel(), console);
        else if constexpr (std::is_same_v<Command, VersionsOptions>)
            return RunVersions(command, options.common, console);
        else if constexpr (std::is_same_v<Command, RestoreOptions>)
            return RunRestore(command, options.common, console);
        else
            return RunPlugins(command, options.common, console);
    };
    return std::visit(run, options.command);
}

ExitCode Report(ExitCode code, const QString& text, Console& console)
{
    console.Json({{QStringLiteral("event"), QStringLiteral("error")},
                  {QStringLiteral("text"), text},
                  {QStringLiteral("exitCode"), int(code)}});
    console.Error(text);
    return code;
}

ExitCode Report(const Jobs::JobError& error, const Options& options, Console& console)
{
    const bool isTarget = error.Kind() == Jobs::JobErrorKind::TargetRefused &&
                          std::holds_alternative<ImportOptions>(options.command);
    QString option;
    if (isTarget)
        option = QStringLiteral("--to ");
    else if (error.Kind() == Jobs::JobErrorKind::FolderMissing)
        option = QStringLiteral("--within ");
    return Report(ExitCodeOf(error.Kind()), option + error.Text(), console);
}

/// Whether standard output takes what there is to say, nobody can tell before all has been said.
ExitCode RunAndReport(const Options& options, Console& console)
{
    const EarlyEnd atWork;
    try {
        const LogSetup log(options.common.log);
        return RunCommand(options, console);
    } catch (const Jobs::JobError& error) {
        return Report(error, options, console);
    } catch (const UsageError& error) {
        return Report(ExitCode::Usage, error.Text(), console);
    }
}

} // namespace

int Run(const QStringList& arguments)
{
    const ParsedCommandLine parsed = ParseCommandLine(arguments);
    if (!parsed.options) {
        const bool failed = parsed.exitCode != ExitCode::Complete;
        Console console(failed && arguments.contains(u"--json"));
        console.Write(parsed.output);
        console.Json({{QStringLiteral("event"), QStringLiteral("error")},
                      {QStringLiteral("text"), parsed.error.section(u'\n', 0, 0)},
                      {QStringLiteral("exitCode"), int(parsed.exitCode)}});
        console.WriteError(parsed.error);
        return int(console.End(parsed.exitCode));
    }
    Console console(parsed.options->common.json, parsed.options->common.quiet);
    return int(console.End(RunAndReport(*parsed.options, console)));
}

} // namespace Halvern::Cli
