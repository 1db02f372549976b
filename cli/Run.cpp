// SPDX-License-Identifier: Apache-2.0

#include "Run.h"

#include "Cancellation.h"
#include "Console.h"
#include "ImportCommand.h"
#include "LinksCommand.h"
#include "Logging.h"
#include "Options.h"
#include "PluginsCommand.h"

namespace Halvern::Cli {

namespace {

ExitCode RunCommand(const Options& options, const LogSetup& log, Console& console)
{
    const auto run = [&](const auto& command) {
        using Command = std::decay_t<decltype(command)>;
        if constexpr (std::is_same_v<Command, ImportOptions>)
            return RunImport(command, options.common, log, console);
        else if constexpr (std::is_same_v<Command, LinksOptions>)
            return RunLinks(command, options.common, log, console);
        else
            return RunPlugins(command, options.common, log, console);
    };
    return std::visit(run, options.command);
}

ExitCode Report(const CommandError& error, Console& console)
{
    console.Json({{QStringLiteral("event"), QStringLiteral("error")},
                  {QStringLiteral("text"), error.Text()},
                  {QStringLiteral("exitCode"), int(error.Code())}});
    console.Error(error.Text());
    return error.Code();
}

} // namespace

int Run(const QStringList& arguments)
{
    const ParsedCommandLine parsed = ParseCommandLine(arguments);
    if (!parsed.options) {
        Console console;
        console.Write(parsed.output);
        console.WriteError(parsed.error);
        return int(parsed.exitCode);
    }
    Console console(parsed.options->common.json, parsed.options->common.quiet);
    WatchForCancel();
    try {
        const LogSetup log(parsed.options->common.log);
        return int(RunCommand(*parsed.options, log, console));
    } catch (const CommandError& error) {
        return int(Report(error, console));
    }
}

} // namespace Halvern::Cli
