// SPDX-License-Identifier: Apache-2.0

// From one open file to another. For the POSIX sources of this folder alone.

#pragma once

#include "base/ContentHash.h"
#include "base/FileResult.h"

#include <filesystem>

#include <sys/stat.h>

namespace Halvern::Base {

/// What is copied.
struct Original
{
    int in = -1;
    /// Before the first byte was read.
    struct stat info = {};
    /// What must be so after the last byte, too, if anything; the name of the source.
    const std::filesystem::path* watched = nullptr;
    /// Where the hash of the bytes goes, if anywhere.
    ContentHash* hash = nullptr;
};

/// Gives an empty file the bytes, permissions and time of another one. A failure may leave a part
/// written.
FileResult FillCopy(const Original& original, int out);

/// Waits until a change of the file after `info` can be told from those before. A file that changes
/// all the time is told by that later on.
bool LetTheClockGoOn(int in, struct stat& info);

} // namespace Halvern::Base
