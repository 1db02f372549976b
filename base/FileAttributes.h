// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>

namespace Halvern::Base {

/// Windows: the read-only attribute is not set. POSIX: the owner may write (not access(), which
/// says yes to root for everything). False for a file that does not exist.
bool IsWritable(const std::filesystem::path& path);

/// Whether this process may make files in a folder, as far as the system tells without one being
/// made. False for what is no folder.
bool MayAddTo(const std::filesystem::path& folder);

/// What AllowWriting changed.
struct WriteRights
{
    /// POSIX: the write bits of the mode. Windows: not 0 when the read-only attribute was not set.
    std::uint32_t bits = 0;
};

/// Makes a file writable for an operation: POSIX adds the owner's write bit, Windows takes the
/// read-only attribute away; nothing else changes. Nothing for a file that does not exist.
WriteRights AllowWriting(const std::filesystem::path& path);
/// Undoes it. What else changed meanwhile stays.
void RestoreWriting(const std::filesystem::path& path, WriteRights rights);

} // namespace Halvern::Base
