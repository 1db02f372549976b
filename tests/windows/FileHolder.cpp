// SPDX-License-Identifier: Apache-2.0

// The second program of the sharing tests. It holds a file until its standard input ends:
//
//     file_holder hold <access> <share> <file>     opens it now
//     file_holder await <access> <share> <file>    opens it as soon as it exists
//     file_holder readonly - - <file>              makes it read-only as soon as it exists
//
// Access and share are made of the letters r, w and d (delete); "-" is none. It prints "ready" once
// it holds the file, or once it waits for it.

#include <cstdio>
#include <thread>

#include <windows.h>

namespace {

DWORD Bits(const wchar_t* letters, DWORD read, DWORD write, DWORD remove)
{
    DWORD bits = 0;
    for (; *letters; ++letters)
        bits |= *letters == L'r' ? read : *letters == L'w' ? write : *letters == L'd' ? remove : 0;
    return bits;
}

HANDLE Open(wchar_t** argv)
{
    return ::CreateFileW(argv[4], Bits(argv[2], GENERIC_READ, GENERIC_WRITE, DELETE),
                         Bits(argv[3], FILE_SHARE_READ, FILE_SHARE_WRITE, FILE_SHARE_DELETE),
                         nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool SayReady()
{
    return std::puts("ready") >= 0 && std::fflush(stdout) == 0;
}

void WaitForEndOfInput()
{
    while (std::getchar() != EOF) {
    }
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc != 5)
        return 2;
    const wchar_t mode = *argv[1];
    if (mode == L'h') {
        const HANDLE file = Open(argv);
        if (file == INVALID_HANDLE_VALUE)
            return 1;
        SayReady();
        WaitForEndOfInput();
        ::CloseHandle(file);
        return 0;
    }
    // The file exists for as long as another one is copied: there is no time to sleep.
    std::thread([mode, argv] {
        for (;;) {
            if (mode == L'a' && Open(argv) != INVALID_HANDLE_VALUE)
                return;
            if (mode == L'r' && ::SetFileAttributesW(argv[4], FILE_ATTRIBUTE_READONLY))
                return;
        }
    }).detach();
    SayReady();
    WaitForEndOfInput();
    // Ends the thread, too, and closes what it opened.
    std::_Exit(0);
}
