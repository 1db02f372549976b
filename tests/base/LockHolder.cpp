// SPDX-License-Identifier: Apache-2.0

// Holds a lock on a file until its standard input ends:
//
//     LockHolder flock|flock-shared|write|read|tail|open-file|open FILE
//
// Prints "ready" when it has it.

#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

bool SetRange(int fd, int command, short type, off_t start)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    return ::fcntl(fd, command, &lock) == 0;
}

bool Take(int fd, const char* kind)
{
    const auto is = [kind](const char* name) { return std::strcmp(kind, name) == 0; };
    if (is("flock"))
        return ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    if (is("flock-shared"))
        return ::flock(fd, LOCK_SH | LOCK_NB) == 0;
    if (is("write"))
        return SetRange(fd, F_SETLK, F_WRLCK, 0);
    if (is("read"))
        return SetRange(fd, F_SETLK, F_RDLCK, 0);
    if (is("tail"))
        return SetRange(fd, F_SETLK, F_WRLCK, 1000);
    if (is("open-file"))
        return SetRange(fd, F_OFD_SETLK, F_WRLCK, 0);
    return is("open");
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3)
        return 2;
    const int fd = ::open(arguments[2], O_RDWR | O_CLOEXEC);
    if (fd < 0 || !Take(fd, arguments[1])) {
        std::perror(arguments[2]);
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}
