// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

namespace Halvern::Cli {

class Console;

/// `corsync plugins`. Changes nothing anywhere. Throws Jobs::JobError when it cannot begin.
ExitCode RunPlugins(const PluginsOptions& options, const CommonOptions& common, Console& console);

} // namespace Halvern::Cli
