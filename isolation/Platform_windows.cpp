// SPDX-License-Identifier: Apache-2.0

#include "isolation/Platform.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace Halvern::Isolation {

namespace {

constexpr int StandardInput = 0;
constexpr int StandardOutput = 1;
constexpr int StandardError = 2;

std::FILE* PrivateCopy(int descriptor, const char* mode)
{
    const int copy = _dup(descriptor);
    if (copy < 0)
        return nullptr;
    SetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(copy)), HANDLE_FLAG_INHERIT, 0);
    _setmode(copy, _O_BINARY);
    return _fdopen(copy, mode);
}

bool ReplaceByNothing(int descriptor)
{
    const int nothing = _open("NUL", _O_RDWR);
    const bool replaced = nothing >= 0 && _dup2(nothing, descriptor) == 0;
    if (nothing >= 0)
        _close(nothing);
    return replaced;
}

} // namespace

QString EndingText(int code)
{
    return QStringLiteral("code 0x%1").arg(quint32(code), 8, 16, QLatin1Char('0'));
}

Streams TakeStreams()
{
    const Streams streams{PrivateCopy(StandardInput, "rb"), PrivateCopy(StandardOutput, "wb")};
    const bool taken = streams.requests && streams.answers && ReplaceByNothing(StandardInput) &&
                       _dup2(StandardError, StandardOutput) == 0;
    // What asks the system instead of the C library gets the same.
    SetStdHandle(STD_INPUT_HANDLE, reinterpret_cast<HANDLE>(_get_osfhandle(StandardInput)));
    SetStdHandle(STD_OUTPUT_HANDLE, reinterpret_cast<HANDLE>(_get_osfhandle(StandardOutput)));
    return taken ? streams : Streams{};
}

void LimitMemory(long long bytes)
{
    // No box that says that a program has stopped: somebody waits for this one.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    if (bytes <= 0)
        return;
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    if (!job)
        return;
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_PROCESS_MEMORY;
    limits.ProcessMemoryLimit = SIZE_T(bytes);
    // The handle stays open: the limit lives as long as the process.
    if (SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits))
        (void)AssignProcessToJobObject(job, GetCurrentProcess());
}

void IgnoreInterrupts()
{
    SetConsoleCtrlHandler(nullptr, TRUE);
}

} // namespace Halvern::Isolation
