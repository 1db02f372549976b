// SPDX-License-Identifier: Apache-2.0

#include "Descriptors.h"

#include <algorithm>
#include <cstdlib>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace Halvern::Cli {

namespace {

constexpr int FirstPrivate = 3;
constexpr int UnknownWidth = 80;
constexpr int MillisecondsBetweenLooks = 10;
constexpr unsigned PipeBytes = 65536;
constexpr DWORD StandardHandles[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};

HANDLE HandleOf(int descriptor)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

/// What errno says of a pipe without a reader is no help. A disk that is full is no error here.
QString ReasonOfFailure(bool isError)
{
    return qt_error_string(isError ? int(_doserrno) : ERROR_DISK_FULL).trimmed();
}

} // namespace

bool IsOpen(int descriptor)
{
    const HANDLE handle = GetStdHandle(StandardHandles[descriptor]);
    return handle && handle != INVALID_HANDLE_VALUE && HandleOf(descriptor) != INVALID_HANDLE_VALUE;
}

void OpenMissingDescriptors()
{
    // A new descriptor gets the lowest number that is free.
    int opened = 0;
    do {
        opened = _open("NUL", _O_RDWR);
    } while (opened >= 0 && opened < FirstPrivate);
    if (opened >= FirstPrivate)
        _close(opened);
}

void SurviveBrokenPipes() {}

void DelayAborts() {}

int DuplicateOf(int descriptor)
{
    const int duplicate = _dup(descriptor);
    if (duplicate >= 0)
        SetHandleInformation(HandleOf(duplicate), HANDLE_FLAG_INHERIT, 0);
    return duplicate;
}

void Redirect(int standard, int to)
{
    if (_dup2(to, standard) != 0)
        return;
    // Programs that are started, and other C libraries, ask the system.
    SetHandleInformation(HandleOf(standard), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    SetStdHandle(StandardHandles[standard], HandleOf(standard));
}

void RedirectToNothing(int standard)
{
    const int nothing = _open("NUL", _O_RDWR);
    if (nothing < 0)
        return;
    Redirect(standard, nothing);
    _close(nothing);
}

void Close(int descriptor)
{
    _close(descriptor);
}

QString WriteAll(int descriptor, const QByteArray& bytes)
{
    // The console takes no more than this at once.
    constexpr qsizetype Portion = 8192;
    for (qsizetype done = 0; done < bytes.size();) {
        const unsigned wanted = unsigned(std::min(Portion, bytes.size() - done));
        const int written = _write(descriptor, bytes.constData() + done, wanted);
        if (written <= 0)
            return ReasonOfFailure(written < 0);
        done += written;
    }
    return {};
}

bool IsTerminal(int descriptor)
{
    DWORD mode = 0;
    return GetConsoleMode(HandleOf(descriptor), &mode) != 0;
}

int WidthOfTerminal(int descriptor)
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(HandleOf(descriptor), &info))
        return UnknownWidth;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

Pipe MakePipe()
{
    int ends[2] = {NoDescriptor, NoDescriptor};
    if (_pipe(ends, PipeBytes, _O_BINARY | _O_NOINHERIT) != 0)
        return {};
    return {ends[0], ends[1]};
}

bool WaitForInput(int descriptor, int milliseconds)
{
    for (int waited = 0;; waited += MillisecondsBetweenLooks) {
        DWORD available = 0;
        // It fails when every other end is closed, which is something to read: the end.
        if (!PeekNamedPipe(HandleOf(descriptor), nullptr, 0, nullptr, &available, nullptr) ||
            available > 0)
            return true;
        if (waited >= milliseconds)
            return false;
        Sleep(MillisecondsBetweenLooks);
    }
}

QByteArray ReadSome(int descriptor)
{
    char buffer[4096];
    const int count = _read(descriptor, buffer, sizeof buffer);
    return count > 0 ? QByteArray(buffer, count) : QByteArray();
}

} // namespace Halvern::Cli
