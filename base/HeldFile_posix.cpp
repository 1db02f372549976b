// SPDX-License-Identifier: Apache-2.0

#include "base/HeldFile.h"

#include "base/PosixApi.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace Halvern::Base {

namespace {

FileResult Take(Descriptor& opened, Handle& handle)
{
    if (::flock(opened.Get(), LOCK_EX | LOCK_NB) != 0)
        return FileResult::Failed({}, static_cast<std::uint32_t>(errno), errno == EWOULDBLOCK);
    handle = opened.Release();
    return {};
}

} // namespace

FileResult HeldFile::Hold(const std::filesystem::path& file)
{
    // Opening a pipe must not wait for somebody who reads it.
    Descriptor opened(
        ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    if (!opened)
        return LastFailure();
    struct stat status = {};
    if (::fstat(opened.Get(), &status) != 0 || !S_ISREG(status.st_mode))
        return FileResult::Failed("not a regular file");
    return Take(opened, m_handle);
}

FileResult HeldFile::HoldFolder(const std::filesystem::path& folder)
{
    Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened)
        return LastFailure();
    return Take(opened, m_handle);
}

void HeldFile::Release() noexcept
{
    if (IsHeld())
        Close(m_handle);
    m_handle = NoHandle;
}

} // namespace Halvern::Base
