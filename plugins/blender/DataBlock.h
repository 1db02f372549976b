// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "StructView.h"

#include <map>
#include <unordered_map>

namespace Halvern::Formats::Blender {

/// A strip of the video editor; its parts lie in blocks of their own.
struct SequenceEntry
{
    /// UTF-8, as below: up to Blender 3.0 strips were named after their files and cut anywhere.
    std::string name;
    std::uint64_t type = 0;
    std::uint64_t strip = 0;
    std::uint64_t sound = 0;
};

/// Folder of a strip, and where the names of its files lie.
struct StripEntry
{
    StoredText folder;
    std::uint64_t files = 0;
};

/// What one data block of Blender (an image, a scene, a library) and the plain blocks after it,
/// which belong to it, say of other files.
struct DataBlock
{
    std::string type;
    /// Two letters for the type, then the name that is shown: unique among those of a file. Always
    /// UTF-8, whatever stands in the file: links are told apart by it.
    std::string name;
    std::uint64_t address = 0;
    StoredText text;
    /// Pointer to the block that holds the path of a text file.
    std::uint64_t textAddress = 0;
    /// Of an image or a movie clip.
    std::uint64_t source = 0;
    bool isPacked = false;
    bool isSequence = false;
    std::vector<std::uint64_t> tiles;
    std::vector<SequenceEntry> sequences;
    std::unordered_map<std::uint64_t, StripEntry> strips;
    std::unordered_map<std::uint64_t, std::vector<StoredText>> stripFiles;
    /// Paths of parts: a modifier, a layer, a node. With the name of their struct.
    std::vector<std::pair<std::string, StoredText>> parts;
};

} // namespace Halvern::Formats::Blender
