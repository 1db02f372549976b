// Opens a file without sharing, as another program would, until its standard input ends:
//
//     lock_holder <any> <file>

#include <cstdio>

#include <windows.h>

int wmain(int argc, wchar_t** argv)
{
    if (argc != 3)
        return 2;
    const HANDLE file = CreateFileW(argv[2], GENERIC_READ | GENERIC_WRITE, 0, nullptr,
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
