// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

namespace Halvern::Cli {

class Console;

/// `corsync restore`. Throws Jobs::JobError when nothing was restored.
ExitCode RunRestore(const RestoreOptions& options, const CommonOptions& common, Console& console);

} // namespace Halvern::Cli
