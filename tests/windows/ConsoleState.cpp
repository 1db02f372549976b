// SPDX-License-Identifier: Apache-2.0

// corsync_console_state COMMAND...: runs the command in this program's console, which has an old
// code page then. Ends with 0 when the command used another one, and code page and modes are as
// before.

#include <cstdio>
#include <string>

#include <windows.h>

namespace {

constexpr UINT OldCodePage = 850;
constexpr DWORD Patience = 60000;

struct State
{
    UINT codePage = GetConsoleOutputCP();
    DWORD outputMode = Mode(STD_OUTPUT_HANDLE);
    DWORD errorMode = Mode(STD_ERROR_HANDLE);

    bool operator==(const State&) const = default;

    static DWORD Mode(DWORD stream)
    {
        DWORD mode = 0;
        GetConsoleMode(GetStdHandle(stream), &mode);
        return mode;
    }
};

void Print(const char* when, const State& state)
{
    std::printf("%s: code page %u, modes %lx and %lx\n", when, state.codePage, state.outputMode,
                state.errorMode);
}

std::wstring CommandLine(int argc, wchar_t** argv)
{
    std::wstring line;
    for (int i = 1; i < argc; ++i)
        line.append(L"\"").append(argv[i]).append(L"\" ");
    return line;
}

/// False when the command did not start or did not end. `*meanwhile` is the last code page seen
/// that is not the old one.
bool Run(std::wstring command, UINT* meanwhile)
{
    STARTUPINFOW start = {};
    start.cb = sizeof(start);
    PROCESS_INFORMATION process;
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &start, &process))
        return false;
    const ULONGLONG begin = GetTickCount64();
    bool ended = false;
    while (!ended && GetTickCount64() - begin < Patience) {
        ended = WaitForSingleObject(process.hProcess, 1) == WAIT_OBJECT_0;
        if (const UINT codePage = GetConsoleOutputCP(); codePage != OldCodePage)
            *meanwhile = codePage;
    }
    if (!ended)
        TerminateProcess(process.hProcess, 1);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return ended;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    SetConsoleOutputCP(OldCodePage);
    const State before;
    UINT meanwhile = 0;
    const bool ended = Run(CommandLine(argc, argv), &meanwhile);
    const State after;
    Print("before", before);
    Print("after", after);
    std::printf("meanwhile: code page %u\n", meanwhile);
    const bool changed = meanwhile == CP_UTF8;
    return ended && changed && before.codePage == OldCodePage && before == after ? 0 : 1;
}
