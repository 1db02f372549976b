// SPDX-License-Identifier: Apache-2.0

#include "base/FileLock.h"

#include "base/FileAttributes.h"
#include "base/PosixApi.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/file.h>

namespace Halvern::Base {

namespace {

bool HoldsForeignFlock(int fd)
{
    if (::flock(fd, LOCK_SH | LOCK_NB) != 0)
        return errno == EWOULDBLOCK;
    ::flock(fd, LOCK_UN);
    return false;
}

bool HoldsForeignFcntlLock(int fd)
{
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    return ::fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type == F_WRLCK;
}

} // namespace

bool IsFileLocked(const std::filesystem::path& path)
{
    if (!IsWritable(path))
        return false;
    const Descriptor fd(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK));
    if (!fd)
        return errno != ENOENT;
    return HoldsForeignFlock(fd.Get()) || HoldsForeignFcntlLock(fd.Get());
}

} // namespace Halvern::Base
