// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Blender {

/// The names of the files in the folders around a .blend file, each folder read once: thousands of
/// sequences may lie in one.
class FolderNames
{
public:
    /// `base` is the folder of the .blend file, against which others are taken.
    explicit FolderNames(std::filesystem::path base) : m_base(std::move(base)) {}

    /// Those that begin with `beginning`, in order; none for a folder that cannot be read. Throws
    /// FormatError for folders beyond reason.
    std::vector<std::string> NamesWith(const std::string& folder, std::string_view beginning);

private:
    const std::vector<std::string>& NamesIn(const std::string& folder);

    std::filesystem::path m_base;
    std::map<std::string, std::vector<std::string>> m_names;
    std::size_t m_count = 0;
};

} // namespace Halvern::Formats::Blender
