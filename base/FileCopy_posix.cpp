// SPDX-License-Identifier: Apache-2.0

#include "base/FileCopy.h"

#include "base/FileRenaming.h"
#include "base/PosixApi.h"

#include <cerrno>
#include <memory>
#include <optional>
#include <string>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

constexpr std::size_t CopyBlock = std::size_t(1) << 30;
constexpr std::size_t BufferSize = std::size_t(256) * 1024;

bool IsUnsupported(int error)
{
    return error == EXDEV || error == ENOSYS || error == EINVAL || error == EOPNOTSUPP ||
           error == EBADF || error == EPERM;
}

bool WriteBlock(int out, const char* bytes, ssize_t size)
{
    for (ssize_t done = 0; done < size;) {
        const ssize_t wrote = ::write(out, bytes + done, static_cast<std::size_t>(size - done));
        if (wrote < 0 && errno != EINTR)
            return false;
        done += wrote > 0 ? wrote : 0;
    }
    return true;
}

bool CopyByBlocks(int in, int out)
{
    const auto buffer = std::make_unique<char[]>(BufferSize);
    for (;;) {
        const ssize_t got = ::read(in, buffer.get(), BufferSize);
        if (got == 0)
            return true;
        if (got < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (!WriteBlock(out, buffer.get(), got))
            return false;
    }
}

bool CopyBytes(int in, int out, const struct stat& info)
{
    if (CloneBytes(in, out))
        return true;
    // Some file systems state no size for files that have bytes, or copy no range of them: whatever
    // was copied, the rest is read to its end.
    bool started = false;
    while (info.st_size > 0) {
        const ssize_t got = ::copy_file_range(in, nullptr, out, nullptr, CopyBlock, 0);
        if (got == 0)
            break;
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 && !started && IsUnsupported(errno))
            break;
        if (got < 0)
            return false;
        started = true;
    }
    return CopyByBlocks(in, out);
}

bool FillCopy(int in, int out, const struct stat& info)
{
    const struct timespec times[2] = {{0, UTIME_OMIT}, info.st_mtim};
    return CopyBytes(in, out, info) && ::fchmod(out, info.st_mode & 0777) == 0 &&
           ::futimens(out, times) == 0;
}

FileResult NameFailure(const std::filesystem::path& target, std::uint32_t code)
{
    if (code == EEXIST)
        return FileResult::Failed("Destination file exists");
    return FileResult::Failed("Cannot create " + target.native() + " for output", code);
}

FileResult SourceFailure(const std::filesystem::path& source, const char* reason,
                         std::uint32_t code)
{
    return FileResult::Failed("Cannot open " + source.native() + " for input" + reason, code);
}

std::filesystem::path FolderOf(const std::filesystem::path& file)
{
    return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

/// A file without a name until it is complete; not every file system has them, and then there is no
/// result.
std::optional<FileResult> CopyThroughUnnamedFile(int in, const struct stat& info,
                                                 const std::filesystem::path& target)
{
    Descriptor out(::open(FolderOf(target).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    if (!out)
        return std::nullopt;
    if (!FillCopy(in, out.Get(), info))
        return LastFailure("Failure to write block");
    const std::string handle = "/proc/self/fd/" + std::to_string(out.Get());
    if (::linkat(AT_FDCWD, handle.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) == 0)
        return FileResult();
    if (errno == ENOENT)
        return std::nullopt;
    return NameFailure(target, static_cast<std::uint32_t>(errno));
}

FileResult CopyThroughTemporaryName(int in, const struct stat& info,
                                    const std::filesystem::path& target)
{
    // Not made from the target's name, which may be as long as names can be.
    std::string temporary = FolderOf(target).native() + "/.copy-XXXXXX";
    Descriptor out(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!out)
        return LastFailure("Cannot open for output");
    if (::lseek(in, 0, SEEK_SET) < 0 || !FillCopy(in, out.Get(), info) || !out.Close()) {
        FileResult failure = LastFailure("Failure to write block");
        ::unlink(temporary.c_str());
        return failure;
    }
    const FileResult renamed = RenameToFree(temporary, target);
    if (renamed)
        return {};
    ::unlink(temporary.c_str());
    return NameFailure(target, renamed.Code());
}

bool Synchronize(const std::filesystem::path& path, bool isFolder)
{
    const Descriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | (isFolder ? O_DIRECTORY : 0)));
    if (fd && (isFolder ? ::fsync(fd.Get()) : ::fdatasync(fd.Get())) == 0)
        return true;
    // File systems that keep nothing on a disk have nothing to flush.
    return fd && (errno == EINVAL || errno == ENOTSUP);
}

} // namespace

FileResult CopyFileBytes(const std::filesystem::path& source, const std::filesystem::path& target)
{
    struct stat existing = {};
    if (::lstat(target.c_str(), &existing) == 0)
        return NameFailure(target, EEXIST);
    // Without O_NONBLOCK opening a pipe would wait for a writer.
    const Descriptor in(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat info = {};
    if (!in || ::fstat(in.Get(), &info) != 0)
        return SourceFailure(source, "", static_cast<std::uint32_t>(errno));
    if (!S_ISREG(info.st_mode))
        return SourceFailure(source, ": Not a regular file", 0);
    if (std::optional<FileResult> result = CopyThroughUnnamedFile(in.Get(), info, target))
        return *std::move(result);
    return CopyThroughTemporaryName(in.Get(), info, target);
}

bool CloneBytes(Handle source, Handle target) noexcept
{
    return ::ioctl(static_cast<int>(target), FICLONE, static_cast<int>(source)) == 0;
}

FileResult FlushFile(const std::filesystem::path& path)
{
    if (Synchronize(path, false) && Synchronize(FolderOf(path), true))
        return {};
    return LastFailure("Cannot flush " + path.native());
}

} // namespace Halvern::Base
