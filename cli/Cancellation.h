// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/CancelToken.h"

namespace Halvern::Cli {

/// From now on Ctrl-C and the system's polite requests to end (where a terminal that vanishes asks,
/// too, unless the process is to survive that) do not end the process. The first one cancels this
/// token, which is the same at every call, and says so on standard error. A second one ends the
/// process as if nobody watched: nothing is tidied up, whatever the process is in the middle of.
const Jobs::CancelToken& WatchForCancel();

} // namespace Halvern::Cli
