// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileHandle.h"
#include "base/FileResult.h"
#include "base/FileStatus.h"

#include <filesystem>

namespace Halvern::Base {

struct ContentHash;

/// Copies a regular file's bytes, permissions and modification time to a name that does not exist
/// yet and that the system allows; the name appears only when the copy is complete. Shares blocks
/// where the file system can. The data is not flushed. A failure leaves nothing behind, and has a
/// text of its own for a name that is taken ("Destination file exists"). A process that is killed
/// may leave a file .copy-... in the target's folder. Holes stay holes. A WorkWatch of the thread
/// may stop it (FileProblem::Stopped). Safe to call from any thread; only a lack of
/// memory throws.
FileResult CopyFileBytes(const std::filesystem::path& source, const std::filesystem::path& target);

/// The same, and a source that became another file while it was copied is a failure of its own
/// (FileProblem::Changed), which leaves nothing behind either: the open source is looked at before
/// its first byte and after its last, and its name must still be its. `copied` is what the source
/// was, and `hash` gets the hash of the bytes of the copy; both stay as they were after a failure.
/// A source that was saved in this very moment is waited for, until the clock of the files can tell
/// the next save from that one.
FileResult CopyUnchangedBytes(const std::filesystem::path& source,
                              const std::filesystem::path& target, FileStatus& copied,
                              ContentHash* hash = nullptr);

/// Makes the open, empty file `target` share the bytes of the open file `source` until one is
/// written. False where the file system cannot, and then `target` is as it was.
bool CloneBytes(Handle source, Handle target) noexcept;

/// Waits until a file's data and its name are on the disk. Fails when the system cannot promise
/// that.
FileResult FlushFile(const std::filesystem::path& path);

} // namespace Halvern::Base
