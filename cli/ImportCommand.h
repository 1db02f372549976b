// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

#include "corsync/CancelToken.h"

namespace Halvern::Cli {

class Console;

/// `corsync import`. Throws Jobs::JobError when it cannot begin.
ExitCode RunImport(const ImportOptions& options, const CommonOptions& common,
                   const Jobs::CancelToken& cancel, Console& console);

} // namespace Halvern::Cli
