// SPDX-License-Identifier: Apache-2.0

// What the POSIX sources of this folder share. For them alone.

#pragma once

#include "base/FileResult.h"

#include <cerrno>
#include <string>
#include <utility>

#include <unistd.h>

namespace Halvern::Base {

/// The failure of the system's last call.
inline FileResult LastFailure(std::string what = {})
{
    const int code = errno;
    return FileResult::Failed(std::move(what), static_cast<std::uint32_t>(code));
}

/// Closes a file descriptor at the end of its life.
class Descriptor
{
public:
    explicit Descriptor(int fd) noexcept : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
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
