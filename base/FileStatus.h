// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileHandle.h"

#include <cstdint>
#include <filesystem>

namespace Halvern::Base {

// What the disk says of a file. Symbolic links are followed but by ReadLinkStatus; a shortcut of
// Windows (.lnk) is the file that it is. What cannot be looked at is not there: nothing here fails,
// and only a lack of memory throws. Safe to call from any thread.

enum class FileKind
{
    Missing,
    File,
    Folder,
    /// A pipe, a device, a socket.
    Other,
    /// A symbolic link or (Windows) a junction, where links are not followed.
    Link
};

struct FileStatus
{
    FileKind kind = FileKind::Missing;
    std::uint64_t size = 0;
    /// Last modification in nanoseconds since 1970, UTC; NTFS counts in steps of 100.
    std::int64_t modified = 0;
    /// When the system last noted a change of the file, its name or its rights; no program can set
    /// it. 0 on Windows, where reading what only the cloud has changes it.
    std::int64_t changed = 0;
    /// Together they are the file, whatever name it was reached by.
    std::uint64_t device = 0;
    std::uint64_t index = 0;
    /// How many names (hard links) the file has.
    std::uint64_t names = 0;

    bool Exists() const noexcept { return kind != FileKind::Missing; }
    bool operator==(const FileStatus&) const = default;
};

FileStatus ReadFileStatus(const std::filesystem::path& path);
FileStatus ReadFileStatus(Handle handle);
/// Of the entry itself: a link is a FileKind::Link, wherever it leads.
FileStatus ReadLinkStatus(const std::filesystem::path& path);

/// On Windows also true for a symbolic link that leads nowhere.
bool Exists(const std::filesystem::path& path);
bool IsFile(const std::filesystem::path& path);
bool IsFolder(const std::filesystem::path& path);
/// Both exist, and are one file.
bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b);
/// Where a symbolic link leads; the path itself when it is none or leads nowhere.
std::filesystem::path Resolved(const std::filesystem::path& path);

} // namespace Halvern::Base
