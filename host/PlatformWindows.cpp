#include "Platform.h"

#include <QtCore/QDir>

#include <io.h>
#include <windows.h>

namespace Halvern::Host {

void PrepareConsole()
{
    SetConsoleOutputCP(CP_UTF8);
    // The progress line clears itself with an escape sequence.
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(error, &mode))
        SetConsoleMode(error, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

bool IsStandardErrorTerminal()
{
    return _isatty(_fileno(stderr)) != 0;
}

int TerminalWidth()
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info))
        return 80;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

QString CommonDataFolder()
{
    return QDir::fromNativeSeparators(qEnvironmentVariable("ProgramData"));
}

} // namespace Halvern::Host
