// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileHandle.h"
#include "base/FileResult.h"

#include <filesystem>

namespace Halvern::Base {

/// Copies a regular file's bytes, permissions and modification time to a name that does not exist
/// yet and that the system allows; the name appears only when the copy is complete. Shares blocks
/// where the file system can. The data is not flushed. A failure leaves nothing behind, and has a
/// text of its own for a name that is taken ("Destination file exists"). A process that is killed
/// may leave a file .copy-... in the target's folder. Safe to call from any thread; only a lack of
/// memory throws.
FileResult CopyFileBytes(const std::filesystem::path& source, const std::filesystem::path& target);

/// Makes the open, empty file `target` share the bytes of the open file `source` until one is
/// written. False where the file system cannot, and then `target` is as it was.
bool CloneBytes(Handle source, Handle target) noexcept;

/// Waits until a file's data and its name are on the disk. Fails when the system cannot promise
/// that.
FileResult FlushFile(const std::filesystem::path& path);

} // namespace Halvern::Base
