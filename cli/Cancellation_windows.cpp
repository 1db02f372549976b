// SPDX-License-Identifier: Apache-2.0

#include "Cancellation.h"

#include "Platform.h"
#include "Streams.h"

#include <windows.h>

#include <atomic>

namespace Halvern::Cli {

namespace {

Jobs::CancelToken token;

/// What the system itself answers to Ctrl-C. Not by ExitProcess, which waits for a library that is
/// in the middle of something.
constexpr UINT EndedByControl = 0xC000013A;

/// A key that is held down repeats, and a console may tell of one press twice.
constexpr ULONGLONG OnePress = 500;
std::atomic<ULONGLONG> pressedAt = 0;

BOOL WINAPI OnControl(DWORD event)
{
    // The system ends the process after a close, log-off or shutdown whatever is answered.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        return FALSE;
    const ULONGLONG now = GetTickCount64();
    const ULONGLONG before = pressedAt.exchange(now);
    if (before != 0 && now - before < OnePress)
        return TRUE;
    if (token.IsCancelled()) {
        RestoreConsole();
        TerminateProcess(GetCurrentProcess(), EndedByControl);
    }
    token.Cancel();
    WriteMessages(IsStandardErrorTerminal() ? "\r\033[K" : "");
    WriteMessages(
        "corsync: Cancelling after the current step; press Ctrl-C again to end at once\n");
    return TRUE;
}

} // namespace

const Jobs::CancelToken& WatchForCancel()
{
    SetConsoleCtrlHandler(OnControl, TRUE);
    return token;
}

} // namespace Halvern::Cli
