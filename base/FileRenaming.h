// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"

#include <filesystem>

namespace Halvern::Base {

// New names on one disk. A failure leaves both files as they were. Only a lack of memory throws.

/// A file that has the new name is replaced.
FileResult Rename(const std::filesystem::path& from, const std::filesystem::path& to);
/// Puts `temporary` in the place of `file`, in one step, and makes that last: after a power cut
/// either file is whole. Programs that read the old file go on reading it where the system can do
/// that; held when another program has the file open and it cannot.
FileResult RenameOver(const std::filesystem::path& temporary, const std::filesystem::path& file);
/// Fails when something has the new name already.
FileResult RenameToFree(const std::filesystem::path& from, const std::filesystem::path& to);
/// Deletes a file, even a read-only one. That it stays is no failure.
void RemoveFile(const std::filesystem::path& file) noexcept;
/// Deletes the name of a file or of a link to one, even if it is read-only. The file's other names
/// stay as they are, their attributes too.
FileResult RemoveName(const std::filesystem::path& file);

} // namespace Halvern::Base
