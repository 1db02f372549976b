// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileHandle.h"
#include "base/FileResult.h"

#include <filesystem>

namespace Halvern::Base {

/// A file that one object at a time holds, among all processes of the machine. The system lets go
/// of it when the process ends, however it ends. IsFileLocked (FileLock.h) tells whether somebody
/// holds it. Used by one thread at a time; only a lack of memory throws.
class HeldFile
{
public:
    HeldFile() noexcept = default;
    ~HeldFile() { Release(); }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    /// Makes the file when it is missing, for its owner alone. Held when another object has it; a
    /// failure also for what is no file, and for a symbolic link. Requires: nothing is held.
    FileResult Hold(const std::filesystem::path& file);
    /// The same for a folder that is there: held by one object at a time, and open to everybody for
    /// anything else. On Windows a hidden file in it, .corsync-lock, stands for it, which is gone
    /// when it is let go. A file system that has no such locks is a failure.
    FileResult HoldFolder(const std::filesystem::path& folder);
    bool IsHeld() const noexcept { return m_handle != NoHandle; }
    Handle Get() const noexcept { return m_handle; }
    /// The file stays where it is.
    void Release() noexcept;

private:
    Handle m_handle = NoHandle;
};

} // namespace Halvern::Base
