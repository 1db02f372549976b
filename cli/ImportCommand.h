// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Logging.h"
#include "Options.h"

namespace Halvern::Cli {

class Console;

/// `corsync import`. Throws CommandError when the job cannot begin.
ExitCode RunImport(const ImportOptions& options, const CommonOptions& common, const LogSetup& log,
                   Console& console);

} // namespace Halvern::Cli
