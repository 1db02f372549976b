// SPDX-License-Identifier: Apache-2.0

// New names below an open folder.

#include "base/RootedPlace_posix.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

bool Rename(const Place& from, const Place& to)
{
    return ::renameat(from.folder.Get(), from.name.c_str(), to.folder.Get(), to.name.c_str()) == 0;
}

bool Unlink(const Place& place, int flags = 0)
{
    return ::unlinkat(place.folder.Get(), place.name.c_str(), flags) == 0;
}

bool IsSame(const FileStatus& a, const FileStatus& b)
{
    return a.device == b.device && a.index == b.index;
}

bool IsSameFolder(const Place& a, const Place& b)
{
    return IsSame(ReadFileStatus(Handle(a.folder.Get())), ReadFileStatus(Handle(b.folder.Get())));
}

/// Whether two places of one file are two names of it, and not one name in two spellings that the
/// disk takes for one.
bool AreTwoNames(const Place& from, const Place& to)
{
    if (!IsSameFolder(from, to))
        return true;
    std::vector<std::filesystem::path> names;
    if (from.name == to.name || !ReadNames(from.folder.Get(), names))
        return false;
    const auto has = [&](const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    return has(from.name) && has(to.name);
}

/// A rename does nothing, and calls that success, when both are names of one file.
FileResult Replace(const Place& from, const Place& to)
{
    FileStatus moved;
    FileStatus replaced;
    if (!ReadStatus(from, moved))
        return from.Failure();
    const bool isTaken = ReadStatus(to, replaced);
    if (isTaken && IsSame(moved, replaced) && AreTwoNames(from, to))
        return Unlink(from) ? FileResult() : from.Failure();
    // The system would replace an empty folder by another one.
    if (isTaken && !IsSame(moved, replaced) && replaced.kind == FileKind::Folder)
        return FileResult::Refused(FileProblem::IsAFolder, to.relative.native() + " is a folder");
    return Rename(from, to) ? FileResult() : to.Failure();
}

/// A free name for a while, so that it is not free for others. Nothing when it is taken.
bool Reserve(const Place& to, bool isFolder)
{
    if (isFolder)
        return ::mkdirat(to.folder.Get(), to.name.c_str(), 0700) == 0;
    const Descriptor made(::openat(to.folder.Get(), to.name.c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    return bool(made);
}

/// For file systems that know neither a careful rename nor hard links.
FileResult MoveOntoReserved(const Place& from, const Place& to)
{
    FileStatus moved;
    if (!ReadStatus(from, moved))
        return from.Failure();
    const bool isFolder = moved.kind == FileKind::Folder;
    FileStatus reserved;
    FileStatus there;
    if (!Reserve(to, isFolder) || !ReadStatus(to, reserved))
        return to.Failure();
    if (!ReadStatus(to, there) || !(there == reserved))
        return FileResult::Refused(FileProblem::NameTaken, to.relative.native());
    if (Rename(from, to))
        return {};
    FileResult failure = to.Failure();
    Unlink(to, isFolder ? AT_REMOVEDIR : 0);
    return failure;
}

FileResult MoveByLink(const Place& from, const Place& to)
{
    if (::linkat(from.folder.Get(), from.name.c_str(), to.folder.Get(), to.name.c_str(), 0) != 0)
        return errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS || errno == EMLINK
                   ? MoveOntoReserved(from, to)
                   : to.Failure();
    if (Unlink(from))
        return {};
    FileResult failure = from.Failure();
    Unlink(to);
    return failure;
}

FileResult MoveToFree(const Place& from, const Place& to)
{
    if (::renameat2(from.folder.Get(), from.name.c_str(), to.folder.Get(), to.name.c_str(),
                    RENAME_NOREPLACE) == 0)
        return {};
    return errno == EINVAL || errno == ENOSYS ? MoveByLink(from, to) : to.Failure();
}

bool Exchange(const Place& one, const Place& other)
{
    return ::renameat2(one.folder.Get(), one.name.c_str(), other.folder.Get(), other.name.c_str(),
                       RENAME_EXCHANGE) == 0;
}

/// The time of the last change of names and rights does not count: the exchange is one.
bool IsStill(const FileStatus& was, const FileStatus& is)
{
    return is.kind == was.kind && is.size == was.size && is.modified == was.modified &&
           IsSame(is, was);
}

FileResult HasChanged(const Place& place)
{
    return FileResult::Refused(FileProblem::Changed,
                               place.relative.native() + " changed at this moment");
}

FileResult LookAndReplace(const Place& from, const Place& to, const FileStatus& expected)
{
    FileStatus there;
    if (!ReadStatus(to, there))
        return to.Failure();
    return IsStill(expected, there) ? Replace(from, to) : HasChanged(to);
}

/// What came out of the place is not what was to be replaced, and goes back. Whoever has put a file
/// over the new one meanwhile, or has written into it, has replaced both.
FileResult PutBack(const Place& from, const Place& to, const FileStatus& moved)
{
    FileStatus out;
    if (!Exchange(from, to))
        return to.Failure();
    if (ReadStatus(from, out) && !IsStill(moved, out))
        static_cast<void>(Exchange(from, to));
    return HasChanged(to);
}

} // namespace

FileResult ReplaceUnchangedEntry(const Place& from, const Place& to, const FileStatus& expected)
{
    FileStatus moved;
    if (!ReadStatus(from, moved))
        return from.Failure();
    if (!Exchange(from, to))
        return errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP
                   ? LookAndReplace(from, to, expected)
                   : to.Failure();
    FileStatus out;
    if (!ReadStatus(from, out) || !IsStill(expected, out))
        return PutBack(from, to, moved);
    // One that stays is somewhere where nobody looks for it.
    static_cast<void>(Unlink(from));
    return {};
}

FileResult MoveEntry(const Place& from, const Place& to, bool replace)
{
    return replace ? Replace(from, to) : MoveToFree(from, to);
}

} // namespace Halvern::Base
