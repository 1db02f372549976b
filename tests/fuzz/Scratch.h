// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Halvern::Fuzz {

/// A folder with files of many kinds, so that links lead somewhere now and then. One per process,
/// in the folder that CORSYNC_FUZZ_FOLDER names or among the temporary files; it goes at the end.
const std::filesystem::path& ScratchFolder();

void WriteFile(const std::filesystem::path& file, std::string_view bytes);
std::string ReadFile(const std::filesystem::path& file);

} // namespace Halvern::Fuzz
