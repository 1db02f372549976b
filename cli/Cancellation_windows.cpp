// SPDX-License-Identifier: Apache-2.0

#include "Cancellation.h"

#include <atomic>

#include <windows.h>

namespace Halvern::Cli {

namespace {

std::atomic<bool> cancelled{false};

BOOL WINAPI OnControl(DWORD event)
{
    // The system ends the process after a close, log-off or shutdown whatever is answered.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        return FALSE;
    cancelled.store(true, std::memory_order_relaxed);
    return TRUE;
}

} // namespace

void WatchForCancel()
{
    SetConsoleCtrlHandler(OnControl, TRUE);
}

bool IsCancelled()
{
    return cancelled.load(std::memory_order_relaxed);
}

} // namespace Halvern::Cli
