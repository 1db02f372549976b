// SPDX-License-Identifier: Apache-2.0

#include "base/FileHandle.h"

#include "base/PosixApi.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

int Number(Handle handle)
{
    return static_cast<int>(handle);
}

int OpenQuietly(int folder, const char* name, int flags)
{
#ifdef O_NOATIME
    const int quiet = ::openat(folder, name, flags | O_NOATIME);
    if (quiet >= 0 || errno != EPERM) // only the owner may ask for it
        return quiet;
#endif
    return ::openat(folder, name, flags);
}

} // namespace

FileResult OpenRegularFile(int folder, const char* name, int flags, Handle& handle)
{
    // O_NONBLOCK: opening a named pipe must not wait for a writer.
    Descriptor opened(OpenQuietly(folder, name, flags | O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!opened)
        return LastFailure();
    struct stat status = {};
    if (::fstat(opened.Get(), &status) != 0 || !S_ISREG(status.st_mode))
        return FileResult::Failed("not a regular file");
    handle = opened.Release();
    return {};
}

FileResult OpenForReading(const std::filesystem::path& file, Handle& handle, Links links)
{
    return OpenRegularFile(AT_FDCWD, file.c_str(), (links == Links::Refuse ? O_NOFOLLOW : 0),
                           handle);
}

FileResult CreateExclusively(const std::filesystem::path& file, Handle& handle)
{
    const int made = ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (made < 0 && errno != EEXIST)
        return LastFailure();
    handle = made < 0 ? NoHandle : made;
    return {};
}

FileResult ReadSome(Handle handle, std::uint64_t offset, char* buffer, std::size_t size,
                    std::size_t& got)
{
    for (;;) {
        const ssize_t count = ::pread(Number(handle), buffer, size, static_cast<off_t>(offset));
        if (count >= 0) {
            got = static_cast<std::size_t>(count);
            return {};
        }
        if (errno != EINTR)
            return LastFailure();
    }
}

FileResult WriteAll(Handle handle, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(Number(handle), bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            return LastFailure();
    }
    return {};
}

FileResult WriteAllAt(Handle handle, std::uint64_t offset, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written =
            ::pwrite(Number(handle), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (written < 0 && errno != EINTR)
            return LastFailure();
        const std::size_t done = written < 0 ? 0 : static_cast<std::size_t>(written);
        bytes.remove_prefix(done);
        offset += done;
    }
    return {};
}

FileResult Lengthen(Handle handle, std::uint64_t size)
{
    return ::ftruncate(Number(handle), static_cast<off_t>(size)) == 0 ? FileResult()
                                                                      : LastFailure();
}

FileResult FlushToDisk(Handle handle)
{
    return ::fsync(Number(handle)) == 0 ? FileResult() : LastFailure();
}

void Close(Handle handle) noexcept
{
    ::close(Number(handle));
}

FileResult CopyPermissions(const std::filesystem::path& file, const std::filesystem::path&,
                           Handle handle)
{
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0)
        return LastFailure("the file's permissions cannot be read");
    // The owner first, because a change of it clears bits of the mode. Who may not give a file away
    // keeps it: that is what saving from an editor does, too.
    [[maybe_unused]] const int owner = ::fchown(Number(handle), status.st_uid, status.st_gid);
    if (::fchmod(Number(handle), status.st_mode & 07777) != 0)
        return LastFailure("the file's permissions cannot be kept");
    return {};
}

} // namespace Halvern::Base
