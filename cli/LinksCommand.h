// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Logging.h"
#include "Options.h"

namespace Halvern::Cli {

class Console;

/// `corsync links`. Changes nothing anywhere. Throws CommandError when a file cannot be looked at.
ExitCode RunLinks(const LinksOptions& options, const CommonOptions& common, const LogSetup& log,
                  Console& console);

} // namespace Halvern::Cli
