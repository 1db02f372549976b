// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/CancelToken.h"

namespace Halvern::Cli {

/// From now on Ctrl-C and the system's polite request to end do not end the process; they cancel
/// this token, which is the same at every call. A second one changes nothing: the job ends at its
/// next poll.
const Jobs::CancelToken& WatchForCancel();

} // namespace Halvern::Cli
