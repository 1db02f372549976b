// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>

namespace Halvern::Base {

// Open files: the calls that differ per system. Failures come as results with the system's error
// number, and leave the arguments as they were; only a lack of memory throws. Several threads may
// read by one handle.

/// A file descriptor, or a HANDLE of Windows.
using Handle = std::intptr_t;
inline constexpr Handle NoHandle = -1;

/// What to do with a file that is a symbolic link itself.
enum class Links
{
    Follow,
    Refuse
};

/// Only regular files; a pipe is not waited for, and the access time stays where the system lets
/// it. Held when another program does not let the file be read.
FileResult OpenForReading(const std::filesystem::path& file, Handle& handle,
                          Links links = Links::Follow);
/// Makes an empty file, for reading and writing; on POSIX for its owner alone. `handle` becomes
/// NoHandle, with success, when something of that name exists already.
FileResult CreateExclusively(const std::filesystem::path& file, Handle& handle);
/// May read less than asked for; `got` is 0 at the end of the file.
FileResult ReadSome(Handle handle, std::uint64_t offset, char* buffer, std::size_t size,
                    std::size_t& got);
/// A failure may leave a part written.
FileResult WriteAll(Handle handle, std::string_view bytes);
/// The same from `offset` on; what lies between the end of the file and there becomes zeros, on
/// POSIX a hole.
FileResult WriteAllAt(Handle handle, std::uint64_t offset, std::string_view bytes);
/// The same for the end of a file that is to be longer.
FileResult Lengthen(Handle handle, std::uint64_t size);
/// Waits until the file's data is on the disk.
FileResult FlushToDisk(Handle handle);
void Close(Handle handle) noexcept;

/// Gives `copy`, open as `handle`, the permissions (and where it may the owner) or the attributes
/// of `file`.
FileResult CopyPermissions(const std::filesystem::path& file, const std::filesystem::path& copy,
                           Handle handle);

} // namespace Halvern::Base
