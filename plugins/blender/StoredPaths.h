// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DataBlock.h"
#include "FolderNames.h"
#include "StoredPath.h"

#include <filesystem>
#include <set>

namespace Halvern::Formats::Blender {

inline constexpr std::size_t MaxLinks = 1'000'000;

/// Tells what of the data blocks of a file are links, and collects them.
/// More than MaxLinks are a FormatError.
class StoredPaths
{
public:
    /// `folder` is that of the file.
    explicit StoredPaths(std::filesystem::path folder) : m_folders(std::move(folder)) {}

    /// True for types that hold a path in the struct itself.
    static bool HasPathOfItsOwn(const std::string& type);

    void Add(DataBlock& block);
    std::vector<std::unique_ptr<StoredPath>> Take();

private:
    struct Entry
    {
        std::unique_ptr<StoredPath> path;
        /// The sound that a strip plays, which may turn out to be packed; 0 for none.
        std::uint64_t sound;
    };

    std::string UniqueId(const std::string& id);
    void AddPathOf(const DataBlock& block);
    void AddStrips(DataBlock& scene);
    void AddPath(std::unique_ptr<StoredPath> path, std::uint64_t sound = 0);

    FolderNames m_folders;
    std::vector<Entry> m_entries;
    std::size_t m_linkCount = 0;
    std::unordered_map<std::string, std::size_t> m_ids;
    std::set<std::uint64_t> m_packedSounds;
};

} // namespace Halvern::Formats::Blender
