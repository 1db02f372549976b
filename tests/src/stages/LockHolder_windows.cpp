// SPDX-License-Identifier: Apache-2.0

// Opens a file for writing that others may only read, as a program with a document does, until its
// standard input ends:
//
//     lock_holder <any> <file>

#include <cstdio>

#include <windows.h>

int wmain(int argc, wchar_t** argv)
{
    if (argc != 3)
        return 2;
    const HANDLE file = CreateFileW(argv[2], GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 1;
    std::puts("locked");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    CloseHandle(file);
    return 0;
}
