// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace Halvern::Base {

/// What a disk has room for, for this user. A number that the system does not have, or that the
/// file system does not count, is not there.
struct Space
{
    std::optional<std::uint64_t> freeBytes;
    /// How many files can still be made (inodes). Not on Windows.
    std::optional<std::uint64_t> freeFiles;
    /// As in FileStatus: folders with the same one share the room.
    std::uint64_t device = 0;
};

/// Of the disk that holds an existing folder. Others use it at the same time: an answer is a hint.
/// Safe to call from any thread; only a lack of memory throws.
FileResult ReadSpace(const std::filesystem::path& folder, Space& space);

/// How many bytes a copy of the file takes that CopyFileBytes makes: its size, without the holes
/// that stay holes. 0 for a file that cannot be opened.
std::uint64_t BytesOfCopy(const std::filesystem::path& file);

} // namespace Halvern::Base
