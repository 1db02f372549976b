// SPDX-License-Identifier: Apache-2.0

#include "Cancellation.h"

#include <csignal>

namespace Halvern::Cli {

namespace {

Jobs::CancelToken token;

void OnSignal(int)
{
    token.Cancel();
}

} // namespace

const Jobs::CancelToken& WatchForCancel()
{
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    // Restarted, so that the copy under way does not fail with EINTR.
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    return token;
}

} // namespace Halvern::Cli
