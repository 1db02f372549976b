// SPDX-License-Identifier: Apache-2.0

// Locks a file as another program would, until its standard input ends:
//
//     lock_holder flock|fcntl <file>

#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

bool LockWithFcntl(int fd)
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return ::fcntl(fd, F_SETLK, &lock) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const int fd = ::open(argv[2], O_RDWR | O_CLOEXEC);
    const bool locked = std::strcmp(argv[1], "flock") == 0 ? ::flock(fd, LOCK_EX | LOCK_NB) == 0
                                                           : LockWithFcntl(fd);
    if (!locked) {
        std::perror(argv[2]);
        return 1;
    }
    std::puts("locked");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}
