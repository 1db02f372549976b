// SPDX-License-Identifier: Apache-2.0

#include "Cancellation.h"

#include <windows.h>

namespace Halvern::Cli {

namespace {

Jobs::CancelToken token;

BOOL WINAPI OnControl(DWORD event)
{
    // The system ends the process after a close, log-off or shutdown whatever is answered.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        return FALSE;
    token.Cancel();
    return TRUE;
}

} // namespace

const Jobs::CancelToken& WatchForCancel()
{
    SetConsoleCtrlHandler(OnControl, TRUE);
    return token;
}

} // namespace Halvern::Cli
