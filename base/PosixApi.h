// SPDX-License-Identifier: Apache-2.0

// What the POSIX sources of this folder share. For them alone.

#pragma once

#include "base/FileResult.h"
#include "base/FileStatus.h"

#include <cerrno>
#include <string>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Base {

/// The failure of the system's last call.
inline FileResult LastFailure(std::string what = {})
{
    const int code = errno;
    return FileResult::Failed(std::move(what), static_cast<std::uint32_t>(code));
}

FileStatus StatusOf(const struct stat& info);
/// OpenForReading with the name in an open folder (or AT_FDCWD), and flags of open() of the
/// caller's.
FileResult OpenRegularFile(int folder, const char* name, int flags, Handle& handle);
/// Waits until the data of an open file, or the names in an open folder, are on the disk. False,
/// with errno, when the system cannot promise that.
bool Synchronize(int fd);

/// Closes a file descriptor at the end of its life.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1) noexcept : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(Descriptor&& other) noexcept : m_fd(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const noexcept { return m_fd; }
    explicit operator bool() const noexcept { return m_fd >= 0; }
    int Release() noexcept { return std::exchange(m_fd, -1); }
    /// False when the system reports a write error only now.
    bool Close() noexcept { return ::close(Release()) == 0; }

private:
    int m_fd;
};

} // namespace Halvern::Base
