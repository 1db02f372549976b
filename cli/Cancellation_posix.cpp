// SPDX-License-Identifier: Apache-2.0

#include "Cancellation.h"

#include <atomic>

#include <csignal>

namespace Halvern::Cli {

namespace {

std::atomic<bool> cancelled{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may touch nothing else");

void OnSignal(int)
{
    cancelled.store(true, std::memory_order_relaxed);
}

} // namespace

void WatchForCancel()
{
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    // Restarted, so that the copy under way does not fail with EINTR.
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool IsCancelled()
{
    return cancelled.load(std::memory_order_relaxed);
}

} // namespace Halvern::Cli
