// SPDX-License-Identifier: Apache-2.0

#include "base/FileCopy.h"

#include "base/ContentHash.h"
#include "base/ContentReader.h"
#include "base/CopyContent_posix.h"
#include "base/FileRenaming.h"
#include "base/PosixApi.h"
#include "base/WorkWatch.h"

#include <cerrno>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

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
    Descriptor out(::open(FolderOf(target).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
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

FileResult FillAndClose(const Original& original, Descriptor& out)
{
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
    if (FileResult filled = FillAndClose(original, out); !filled) {
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

/// What waits in memory goes to the disk piece by piece, so that somebody may stop it.
bool WriteOut(int fd, off_t size)
{
    PieceSize piece(std::size_t(1) << 20, std::size_t(16) << 20);
    WorkWatch* const watch = WorkWatch::OfThisThread();
    for (off_t at = 0; watch && at < size;) {
        if (!watch->GoesOn()) {
            errno = ECANCELED;
            return false;
        }
        const auto length = static_cast<off_t>(piece.Next());
        // An error of the disk is told once; what cannot be done in pieces the flush itself does.
        if (::sync_file_range(fd, at, length,
                              SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                                  SYNC_FILE_RANGE_WAIT_AFTER) != 0)
            return errno != EIO && errno != ENOSPC && errno != EDQUOT;
        at += length;
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

bool Synchronize(int fd)
{
    struct stat info = {};
    const bool isFolder = ::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode);
    if (!isFolder && !WriteOut(fd, info.st_size))
        return false;
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
