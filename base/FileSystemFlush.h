// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"

#include <filesystem>

namespace Halvern::Base {

/// Waits until everything that anybody wrote to the file system of a folder is on the disk: data,
/// names and folders. NotOffered where the system can do that for single files only (Windows).
/// Others who write much at the same time make it take longer. Safe to call from any thread; only a
/// lack of memory throws.
FileResult FlushFileSystem(const std::filesystem::path& folder);

} // namespace Halvern::Base
