// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

#include "corsync/CancelToken.h"

namespace Halvern::Cli {

class Console;

/// `corsync retry`. Throws Jobs::JobError when it cannot begin.
ExitCode RunRetry(const RetryOptions& options, const CommonOptions& common,
                  const Jobs::CancelToken& cancel, Console& console);

} // namespace Halvern::Cli
