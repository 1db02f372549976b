// SPDX-License-Identifier: Apache-2.0

#include "StoredPaths.h"

#include "PatternSet.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Blender {

namespace {

// DO NOT CHANGE THESE VALUES: they are what Blender stores.
enum ImageSource : std::uint64_t
{
    ImageFile = 1,
    ImageSequence = 2,
    ImageMovie = 3,
    ImageTiled = 6
};
constexpr std::uint64_t ClipSequence = 1;
enum StripType : std::uint64_t
{
    StripImage = 0,
    StripMovie = 3,
    StripSound = 4,
    StripOldSound = 5
};

constexpr std::string_view BuiltInFont = "<builtin>";

bool IsLink(const DataBlock& block)
{
    if (block.isPacked || block.text.value.empty())
        return false;
    if (block.type == "VFont")
        return block.text.value != BuiltInFont;
    if (block.type != "Image")
        return true;
    return block.source == ImageFile || block.source == ImageSequence ||
           block.source == ImageMovie || block.source == ImageTiled;
}

bool HasFiles(const SequenceEntry& sequence)
{
    return sequence.type == StripImage || sequence.type == StripMovie ||
           sequence.type == StripSound || sequence.type == StripOldSound;
}

/// Null for a block that names one file.
std::unique_ptr<StoredPath> SetOf(const DataBlock& block, const std::string& id,
                                  FolderNames& folders)
{
    if (block.type == "Image" && block.source == ImageTiled)
        return TileSet::Make(id, block.text, block.tiles, folders);
    if ((block.type == "Image" && block.source == ImageSequence) ||
        (block.type == "MovieClip" && block.source == ClipSequence))
        return FrameSequence::Make(id, block.text, FrameDigits::Last, folders);
    if (block.isSequence)
        return FrameSequence::Make(id, block.text, FrameDigits::AtEnd, folders);
    return nullptr;
}

} // namespace

bool StoredPaths::HasPathOfItsOwn(const std::string& type)
{
    static constexpr std::string_view types[] = {"CacheFile", "Image",  "Library", "MovieClip",
                                                 "VFont",     "Volume", "bSound"};
    return std::find(std::begin(types), std::end(types), type) != std::end(types);
}

/// Names are unique in a sound file; in another one each link is still found again.
std::string StoredPaths::UniqueId(const std::string& id)
{
    const std::size_t occurrence = ++m_ids[id];
    return occurrence == 1 ? id : id + '~' + std::to_string(occurrence);
}

void StoredPaths::AddPath(std::unique_ptr<StoredPath> path, std::uint64_t sound)
{
    m_linkCount += path->LinkCount();
    if (m_linkCount > MaxLinks)
        throw FormatError("more than " + std::to_string(MaxLinks) + " links");
    m_entries.push_back({std::move(path), sound});
}

void StoredPaths::AddPathOf(const DataBlock& block)
{
    const std::string id = UniqueId(block.name);
    std::unique_ptr<StoredPath> path = SetOf(block, id, m_folders);
    if (!path)
        path = std::make_unique<SinglePath>(id, block.text);
    AddPath(std::move(path));
}

void StoredPaths::AddStrips(DataBlock& scene)
{
    for (const SequenceEntry& sequence : scene.sequences) {
        const auto strip = scene.strips.find(sequence.strip);
        if (!HasFiles(sequence) || strip == scene.strips.end())
            continue;
        const auto files = scene.stripFiles.find(strip->second.files);
        if (files == scene.stripFiles.end() || files->second.empty())
            continue;
        const std::string id = UniqueId(scene.name + '/' + sequence.name);
        AddPath(std::make_unique<FolderPath>(id, strip->second.folder, std::move(files->second)),
                sequence.type == StripImage ? 0 : sequence.sound);
        scene.stripFiles.erase(files);
    }
}

void StoredPaths::Add(DataBlock& block)
{
    if (block.type == "bSound" && block.isPacked)
        m_packedSounds.insert(block.address);
    if (IsLink(block))
        AddPathOf(block);
    AddStrips(block);
    std::size_t number = 0;
    for (const auto& [structure, text] : block.parts) {
        const std::string id = block.name + '/' + structure + ' ' + std::to_string(++number);
        AddPath(std::make_unique<SinglePath>(UniqueId(id), text));
    }
}

std::vector<std::unique_ptr<StoredPath>> StoredPaths::Take()
{
    std::vector<std::unique_ptr<StoredPath>> paths;
    for (Entry& entry : m_entries) {
        if (entry.sound == 0 || !m_packedSounds.contains(entry.sound))
            paths.push_back(std::move(entry.path));
    }
    return paths;
}

} // namespace Halvern::Formats::Blender
