// SPDX-License-Identifier: Apache-2.0

#include "base/FileCopy.h"

#include "base/ContentHash.h"
#include "base/FileRenaming.h"
#include "base/PosixApi.h"

#include <cerrno>
#include <ctime>
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
/// More than one step of the clock of the files, which is as coarse as 10 ms on some kernels.
constexpr std::int64_t ClockStep = 20'000'000;

/// What is copied.
struct Original
{
    int in;
    /// Before the first byte was read.
    struct stat info;
    /// What must be so after the last byte, too, if anything; the name of the source.
    const std::filesystem::path* watched = nullptr;
    /// Where the hash of the bytes goes, if anywhere.
    ContentHash* hash = nullptr;
};

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

bool CopyByBlocks(int in, int out, ContentHasher* hasher)
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
        if (hasher)
            hasher->Add({buffer.get(), static_cast<std::size_t>(got)});
    }
}

bool CopyAndHash(const Original& original, int out)
{
    ContentHasher hasher;
    if (!CopyByBlocks(original.in, out, &hasher))
        return false;
    *original.hash = hasher.Result();
    return true;
}

bool CopyBytes(const Original& original, int out)
{
    const int in = original.in;
    if (CloneBytes(in, out))
        return !original.hash || HashContent(in, *original.hash);
    if (original.hash)
        return CopyAndHash(original, out);
    // Some file systems state no size for files that have bytes, or copy no range of them: whatever
    // was copied, the rest is read to its end.
    bool started = false;
    while (original.info.st_size > 0) {
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
    return CopyByBlocks(in, out, nullptr);
}

/// The open file, and what its name leads to: programs save by giving a new file the name of the
/// old one.
bool HasChanged(const Original& original)
{
    const FileStatus before = StatusOf(original.info);
    return ReadFileStatus(Handle(original.in)) != before ||
           ReadFileStatus(*original.watched) != before;
}

FileResult FillCopy(const Original& original, int out)
{
    const struct stat& info = original.info;
    const struct timespec times[2] = {{0, UTIME_OMIT}, info.st_mtim};
    if (!CopyBytes(original, out) || ::fchmod(out, info.st_mode & 0777) != 0 ||
        ::futimens(out, times) != 0)
        return LastFailure("Failure to write block");
    if (original.watched && HasChanged(original))
        return FileResult::Refused(FileProblem::Changed, "The file changed while it was copied");
    return {};
}

FileResult NameFailure(const std::filesystem::path& target, std::uint32_t code)
{
    if (code == EEXIST)
        return FileResult::Refused(FileProblem::NameTaken, "Destination file exists");
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
std::optional<FileResult> CopyThroughUnnamedFile(const Original& original,
                                                 const std::filesystem::path& target)
{
    Descriptor out(::open(FolderOf(target).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    if (!out)
        return std::nullopt;
    if (FileResult filled = FillCopy(original, out.Get()); !filled)
        return filled;
    const std::string handle = "/proc/self/fd/" + std::to_string(out.Get());
    if (::linkat(AT_FDCWD, handle.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) == 0)
        return FileResult();
    if (errno == ENOENT)
        return std::nullopt;
    return NameFailure(target, static_cast<std::uint32_t>(errno));
}

FileResult FillFromTheStart(const Original& original, Descriptor& out)
{
    if (::lseek(original.in, 0, SEEK_SET) < 0)
        return LastFailure("Failure to write block");
    FileResult filled = FillCopy(original, out.Get());
    return filled && !out.Close() ? LastFailure("Failure to write block") : filled;
}

FileResult CopyThroughTemporaryName(const Original& original, const std::filesystem::path& target)
{
    // Not made from the target's name, which may be as long as names can be.
    std::string temporary = FolderOf(target).native() + "/.copy-XXXXXX";
    Descriptor out(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!out)
        return LastFailure("Cannot open for output");
    if (FileResult filled = FillFromTheStart(original, out); !filled) {
        ::unlink(temporary.c_str());
        return filled;
    }
    const FileResult renamed = RenameToFree(temporary, target);
    if (renamed)
        return {};
    ::unlink(temporary.c_str());
    return NameFailure(target, renamed.Code());
}

/// Opens the source of a copy, unless the target's name is taken.
FileResult OpenOriginal(const std::filesystem::path& source, const std::filesystem::path& target,
                        Descriptor& in, Original& original)
{
    struct stat& info = original.info;
    if (::lstat(target.c_str(), &info) == 0)
        return NameFailure(target, EEXIST);
    // Without O_NONBLOCK opening a pipe would wait for a writer.
    in = Descriptor(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!in || ::fstat(in.Get(), &info) != 0)
        return SourceFailure(source, "", static_cast<std::uint32_t>(errno));
    if (!S_ISREG(info.st_mode))
        return SourceFailure(source, ": Not a regular file", 0);
    original.in = in.Get();
    return {};
}

FileResult MakeCopy(const Original& original, const std::filesystem::path& target)
{
    if (std::optional<FileResult> result = CopyThroughUnnamedFile(original, target))
        return *std::move(result);
    return CopyThroughTemporaryName(original, target);
}

/// How long the clock of the files must still go on until a change gets another time than the last
/// one; not above 0 when it would get one now.
std::int64_t Nearness(const struct stat& info)
{
    struct timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const std::int64_t age = (now.tv_sec - info.st_ctim.tv_sec) * std::int64_t(1'000'000'000) +
                             now.tv_nsec - info.st_ctim.tv_nsec;
    // Times of another computer may lie in the future.
    return age < 0 ? 0 : ClockStep - age;
}

/// Waits until a change of the file after `info` can be told from those before. A file that changes
/// all the time is told by that later on.
bool LetTheClockGoOn(int in, struct stat& info)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        const std::int64_t rest = Nearness(info);
        if (rest <= 0)
            return true;
        const struct timespec pause = {0, static_cast<long>(rest)};
        ::nanosleep(&pause, nullptr);
        if (::fstat(in, &info) != 0)
            return false;
    }
    return true;
}

bool SynchronizePath(const std::filesystem::path& path, int flags)
{
    const Descriptor opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC | flags));
    return opened && Synchronize(opened.Get());
}

} // namespace

FileResult CopyFileBytes(const std::filesystem::path& source, const std::filesystem::path& target)
{
    Original original = {};
    Descriptor in;
    if (FileResult opened = OpenOriginal(source, target, in, original); !opened)
        return opened;
    return MakeCopy(original, target);
}

FileResult CopyUnchangedBytes(const std::filesystem::path& source,
                              const std::filesystem::path& target, FileStatus& copied,
                              ContentHash* hash)
{
    Original original = {};
    Descriptor in;
    if (FileResult opened = OpenOriginal(source, target, in, original); !opened)
        return opened;
    if (!LetTheClockGoOn(in.Get(), original.info))
        return SourceFailure(source, "", static_cast<std::uint32_t>(errno));
    ContentHash content;
    original.watched = &source;
    original.hash = hash ? &content : nullptr;
    if (FileResult made = MakeCopy(original, target); !made)
        return made;
    copied = StatusOf(original.info);
    if (hash)
        *hash = content;
    return {};
}

bool CloneBytes(Handle source, Handle target) noexcept
{
    return ::ioctl(static_cast<int>(target), FICLONE, static_cast<int>(source)) == 0;
}

bool Synchronize(int fd)
{
    struct stat info = {};
    const bool isFolder = ::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode);
    if ((isFolder ? ::fsync(fd) : ::fdatasync(fd)) == 0)
        return true;
    // File systems that keep nothing on a disk have nothing to flush.
    return errno == EINVAL || errno == ENOTSUP;
}

FileResult FlushFile(const std::filesystem::path& path)
{
    if (SynchronizePath(path, 0) && SynchronizePath(FolderOf(path), O_DIRECTORY))
        return {};
    return LastFailure("Cannot flush " + path.native());
}

} // namespace Halvern::Base
