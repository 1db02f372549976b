// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Logging.h"
#include "Options.h"

namespace Halvern::Cli {

class Console;

/// `corsync plugins`. Changes nothing anywhere.
ExitCode RunPlugins(const PluginsOptions& options, const CommonOptions& common, const LogSetup& log,
                    Console& console);

} // namespace Halvern::Cli
