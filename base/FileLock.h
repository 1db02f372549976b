// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>

namespace Halvern::Base {

/// True when another program holds the file. False for a file that does not exist, is read-only,
/// or cannot be asked. The probe takes no lock, and leaves times and attributes as they were. Safe
/// to call from any thread; only a lack of memory throws.
///
/// Windows: the file cannot be opened for append. POSIX: a write lock of another process (flock or
/// fcntl), or a file that cannot be opened for append although its write bit is set.
bool IsFileLocked(const std::filesystem::path& path);

} // namespace Halvern::Base
