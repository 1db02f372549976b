// SPDX-License-Identifier: Apache-2.0

#include "base/FileStatus.h"

#include "base/PosixApi.h"

#include <system_error>

#include <sys/stat.h>

namespace Halvern::Base {

namespace {

FileKind KindOf(mode_t mode)
{
    if (S_ISREG(mode))
        return FileKind::File;
    if (S_ISLNK(mode))
        return FileKind::Link;
    return S_ISDIR(mode) ? FileKind::Folder : FileKind::Other;
}

std::int64_t Nanoseconds(const struct timespec& time)
{
    return std::int64_t(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

} // namespace

FileStatus StatusOf(const struct stat& info)
{
    FileStatus status;
    status.kind = KindOf(info.st_mode);
    status.size = static_cast<std::uint64_t>(info.st_size);
    status.modified = Nanoseconds(info.st_mtim);
    status.changed = Nanoseconds(info.st_ctim);
    status.device = static_cast<std::uint64_t>(info.st_dev);
    status.index = static_cast<std::uint64_t>(info.st_ino);
    status.names = static_cast<std::uint64_t>(info.st_nlink);
    return status;
}

FileStatus ReadFileStatus(const std::filesystem::path& path)
{
    struct stat info = {};
    return ::stat(path.c_str(), &info) == 0 ? StatusOf(info) : FileStatus();
}

FileStatus ReadFileStatus(Handle handle)
{
    struct stat info = {};
    return ::fstat(static_cast<int>(handle), &info) == 0 ? StatusOf(info) : FileStatus();
}

FileStatus ReadLinkStatus(const std::filesystem::path& path)
{
    struct stat info = {};
    return ::lstat(path.c_str(), &info) == 0 ? StatusOf(info) : FileStatus();
}

bool Exists(const std::filesystem::path& path)
{
    return ReadFileStatus(path).Exists();
}

bool IsFile(const std::filesystem::path& path)
{
    return ReadFileStatus(path).kind == FileKind::File;
}

bool IsFolder(const std::filesystem::path& path)
{
    return ReadFileStatus(path).kind == FileKind::Folder;
}

std::filesystem::path Resolved(const std::filesystem::path& path)
{
    std::error_code error;
    std::filesystem::path resolved = std::filesystem::canonical(path, error);
    return error ? path : resolved;
}

} // namespace Halvern::Base
