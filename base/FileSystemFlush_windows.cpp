// SPDX-License-Identifier: Apache-2.0

#include "base/FileSystemFlush.h"

#include "base/NativePath.h"

namespace Halvern::Base {

/// Only administrators may flush a whole volume.
FileResult FlushFileSystem(const std::filesystem::path& folder)
{
    return FileResult::Refused(FileProblem::NotOffered,
                               "The disk of " + PathToUtf8(folder) + " cannot be flushed");
}

} // namespace Halvern::Base
