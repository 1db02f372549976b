// SPDX-License-Identifier: Apache-2.0

#include "base/LetterCase.h"

#include "base/FileStatus.h"

namespace Halvern::Base {

/// A folder that was told to tell them apart is used as all the others.
std::optional<bool> FolderIgnoresLetterCase(const std::filesystem::path& folder)
{
    return IsFolder(folder) ? std::optional(true) : std::nullopt;
}

} // namespace Halvern::Base
