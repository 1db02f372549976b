// SPDX-License-Identifier: Apache-2.0

#include "Options.h"

#include "CommandLine.h"
#include "Text.h"

#include <sstream>

namespace Halvern::Cli {

namespace {

ParsedCommandLine Ended(const CLI::App& app, const CLI::ParseError& error)
{
    std::ostringstream out, err;
    const bool ok = app.exit(error, out, err) == 0;
    ParsedCommandLine parsed;
    parsed.exitCode = ok ? ExitCode::Complete : ExitCode::Usage;
    parsed.output = Text(out.str());
    parsed.error = Text(err.str());
    return parsed;
}

} // namespace

ParsedCommandLine ParseCommandLine(const QStringList& arguments)
{
    CommandLine commandLine;
    ParsedCommandLine parsed;
    try {
        parsed.options = commandLine.Parse(arguments);
    } catch (const CLI::ParseError& error) {
        return Ended(commandLine.App(), error);
    }
    return parsed;
}

} // namespace Halvern::Cli
