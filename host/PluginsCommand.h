#pragma once

#include "Logging.h"
#include "Options.h"

namespace Halvern::Host {

class Console;

/// `corsync plugins`. Changes nothing anywhere.
ExitCode RunPlugins(const PluginsOptions& options, const CommonOptions& common, const LogSetup& log,
                    Console& console);

} // namespace Halvern::Host
