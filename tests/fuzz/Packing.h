// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Fuzz {

/// A file's bytes, unpacked when they are gzip or zstd; as they are when that fails.
std::string UnpackedContent(const std::filesystem::path& file);

struct PackedEntry
{
    std::string name;
    std::string_view content;
    bool isDeflated = false;
};

/// A ZIP archive of these.
std::string ZipOf(const std::vector<PackedEntry>& entries);

/// The names and contents of an archive's entries; the bytes of what is no archive.
std::string ZipContent(const std::filesystem::path& file);

} // namespace Halvern::Fuzz
