// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

namespace Halvern::Jobs {
class CancelToken;
}

namespace Halvern::Cli {

class Console;

/// `corsync doctor`.
ExitCode RunDoctor(const DoctorOptions& options, const CommonOptions& common,
                   const Jobs::CancelToken& cancel, Console& console);

} // namespace Halvern::Cli
