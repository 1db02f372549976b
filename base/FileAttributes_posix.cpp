// SPDX-License-Identifier: Apache-2.0

#include "base/FileAttributes.h"

#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

constexpr mode_t WriteBits = S_IWUSR | S_IWGRP | S_IWOTH;

std::optional<mode_t> ReadMode(const std::filesystem::path& path)
{
    struct stat info = {};
    if (::stat(path.c_str(), &info) != 0)
        return std::nullopt;
    return info.st_mode & 07777;
}

} // namespace

bool IsWritable(const std::filesystem::path& path)
{
    return (ReadMode(path).value_or(0) & S_IWUSR) != 0;
}

bool MayAddTo(const std::filesystem::path& folder)
{
    const std::filesystem::path inside = folder / "."; // fails for what is no folder
    return ::faccessat(AT_FDCWD, inside.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

WriteRights AllowWriting(const std::filesystem::path& path)
{
    const std::optional<mode_t> mode = ReadMode(path);
    if (!mode)
        return {};
    ::chmod(path.c_str(), *mode | S_IWUSR);
    return {*mode & WriteBits};
}

void RestoreWriting(const std::filesystem::path& path, WriteRights rights)
{
    if (const std::optional<mode_t> mode = ReadMode(path))
        ::chmod(path.c_str(), (*mode & ~WriteBits) | (rights.bits & WriteBits));
}

} // namespace Halvern::Base
