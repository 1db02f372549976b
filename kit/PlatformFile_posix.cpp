// SPDX-License-Identifier: Apache-2.0

#include "kit/PlatformFile.h"

#include "pluginkit/FormatError.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::PluginKit::Platform {

namespace {

[[noreturn]] void Fail(const char* what)
{
    throw FormatError(std::string(what) + ": " + std::generic_category().message(errno));
}

int Descriptor(Handle handle)
{
    return static_cast<int>(handle);
}

int OpenQuietly(const std::filesystem::path& file)
{
    // O_NONBLOCK: opening a named pipe must not wait for a writer.
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
#ifdef O_NOATIME
    const int quiet = ::open(file.c_str(), flags | O_NOATIME);
    if (quiet >= 0 || errno != EPERM) // only the owner may ask for it
        return quiet;
#endif
    return ::open(file.c_str(), flags);
}

/// A rename is on the disk once the folder is. Not every file system can do that, which is no
/// reason to fail: the file is whole either way.
void FlushFolder(const std::filesystem::path& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY);
    if (descriptor < 0)
        return;
    static_cast<void>(::fsync(descriptor));
    ::close(descriptor);
}

} // namespace

Handle OpenForReading(const std::filesystem::path& file)
{
    const int descriptor = OpenQuietly(file);
    if (descriptor < 0)
        Fail("the file cannot be opened");
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        throw FormatError("not a regular file");
    }
    return descriptor;
}

Handle CreateExclusively(const std::filesystem::path& file)
{
    const int descriptor =
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0 && errno != EEXIST)
        Fail("a temporary file cannot be made");
    return descriptor < 0 ? NoHandle : descriptor;
}

FileStamp StampOf(Handle handle)
{
    struct stat status = {};
    if (::fstat(Descriptor(handle), &status) != 0)
        Fail("the file's state cannot be read");
    FileStamp stamp;
    stamp.size = static_cast<std::uint64_t>(status.st_size);
    stamp.modified = std::int64_t(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
    stamp.volume = static_cast<std::uint64_t>(status.st_dev);
    stamp.id = static_cast<std::uint64_t>(status.st_ino);
    return stamp;
}

std::size_t ReadSome(Handle handle, std::uint64_t offset, char* buffer, std::size_t size)
{
    for (;;) {
        const ssize_t got = ::pread(Descriptor(handle), buffer, size, static_cast<off_t>(offset));
        if (got >= 0)
            return static_cast<std::size_t>(got);
        if (errno != EINTR)
            Fail("the file cannot be read");
    }
}

void WriteAll(Handle handle, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(Descriptor(handle), bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            Fail("the temporary file cannot be written");
    }
}

void FlushToDisk(Handle handle)
{
    if (::fsync(Descriptor(handle)) != 0)
        Fail("the temporary file cannot be flushed to the disk");
}

void Close(Handle handle) noexcept
{
    ::close(Descriptor(handle));
}

void CopyPermissions(const std::filesystem::path& file, const std::filesystem::path&, Handle handle)
{
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0)
        Fail("the file's permissions cannot be read");
    // The owner first, because a change of it clears bits of the mode. Who may not give a file away
    // keeps it: that is what saving from an editor does, too.
    [[maybe_unused]] const int owner = ::fchown(Descriptor(handle), status.st_uid, status.st_gid);
    if (::fchmod(Descriptor(handle), status.st_mode & 07777) != 0)
        Fail("the file's permissions cannot be kept");
}

void RenameOver(const std::filesystem::path& temporary, const std::filesystem::path& file)
{
    if (::rename(temporary.c_str(), file.c_str()) != 0)
        Fail("the file cannot be replaced");
    FlushFolder(file.parent_path());
}

void Remove(const std::filesystem::path& file) noexcept
{
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
}

bool Exists(const std::filesystem::path& file)
{
    std::error_code ignored;
    return std::filesystem::exists(file, ignored);
}

bool IsFile(const std::filesystem::path& file)
{
    std::error_code ignored;
    return std::filesystem::is_regular_file(file, ignored);
}

bool IsFolder(const std::filesystem::path& folder)
{
    std::error_code ignored;
    return std::filesystem::is_directory(folder, ignored);
}

bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b)
{
    std::error_code ignored;
    return std::filesystem::equivalent(a, b, ignored);
}

std::filesystem::path Resolved(const std::filesystem::path& file)
{
    std::error_code error;
    std::filesystem::path resolved = std::filesystem::canonical(file, error);
    return error ? file : resolved;
}

void VisitNames(const std::filesystem::path& folder,
                const std::function<bool(const std::string& name)>& visit)
{
    std::error_code error;
    std::filesystem::directory_iterator entries(folder, error);
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        if (!visit(entries->path().filename().native()))
            return;
    }
}

bool IsNetworkPath(const std::filesystem::path&)
{
    return false;
}

} // namespace Halvern::PluginKit::Platform
