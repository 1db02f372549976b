// SPDX-License-Identifier: Apache-2.0

#include "ThreeDsDocument.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>
#include <array>

namespace Halvern::Formats::Meshes {

namespace {

constexpr std::uint64_t HeaderSize = 6;
constexpr std::uint32_t MainChunk = 0x4D4D;
constexpr std::uint32_t EditorChunk = 0x3D3D;
constexpr std::uint32_t BackgroundName = 0x1100;
constexpr std::uint32_t ObjectChunk = 0x4000;
constexpr std::uint32_t LightChunk = 0x4600;
constexpr std::uint32_t SpotlightChunk = 0x4610;
constexpr std::uint32_t ProjectorName = 0x4653;
constexpr std::uint32_t MaterialName = 0xA000;
constexpr std::uint32_t MapName = 0xA300;
constexpr std::uint32_t MaterialChunk = 0xAFFF;
constexpr std::uint64_t LightPosition = 12;
constexpr std::uint64_t SpotlightTarget = 20;

struct Map
{
    std::uint32_t kind;
    const char* name;
};

constexpr std::array<Map, 16> Maps = {{{0xA200, "texture"},
                                       {0xA204, "specular"},
                                       {0xA210, "opacity"},
                                       {0xA220, "reflection"},
                                       {0xA230, "bump"},
                                       {0xA33A, "texture 2"},
                                       {0xA33C, "shininess"},
                                       {0xA33D, "self-illumination"},
                                       {0xA33E, "texture mask"},
                                       {0xA340, "texture 2 mask"},
                                       {0xA342, "opacity mask"},
                                       {0xA344, "bump mask"},
                                       {0xA346, "shininess mask"},
                                       {0xA348, "specular mask"},
                                       {0xA34A, "self-illumination mask"},
                                       {0xA34C, "reflection mask"}}};

const Map* MapOf(std::uint32_t kind)
{
    const auto found =
        std::find_if(Maps.begin(), Maps.end(), [&](const Map& map) { return map.kind == kind; });
    return found == Maps.end() ? nullptr : &*found;
}

} // namespace

ThreeDsDocument::ThreeDsDocument(const std::filesystem::path& path)
    : MeshDocument(path), m_window(File())
{
    const Chunk main = ChunkAt(0, m_window.Size());
    if (main.kind != MainChunk)
        throw FormatError("a 3DS file begins with its main chunk", 0);
    Enter(main, 0);
    while (!m_open.empty()) {
        // Less than a header is padding.
        if (m_open.back().end - m_at < HeaderSize) {
            m_at = m_open.back().end;
            m_open.pop_back();
            continue;
        }
        const Chunk chunk = ChunkAt(m_at, m_open.back().end);
        m_at = chunk.end;
        Visit(chunk);
    }
}

ThreeDsDocument::Chunk ThreeDsDocument::ChunkAt(std::uint64_t offset, std::uint64_t end)
{
    const auto kind = static_cast<std::uint32_t>(m_window.Little(offset, 2));
    const std::uint64_t size = m_window.Little(offset + 2, 4);
    if (size < HeaderSize || size > end - offset)
        throw FormatError("a chunk of " + std::to_string(size) + " bytes where " +
                              std::to_string(end - offset) + " are left",
                          offset);
    return {kind, offset, offset + size, std::nullopt};
}

/// What is in an open chunk depends on the chunk.
void ThreeDsDocument::Visit(const Chunk& chunk)
{
    const std::uint32_t outer = m_open.back().kind;
    const std::uint64_t content = chunk.begin + HeaderSize;
    if (chunk.kind == EditorChunk && outer == MainChunk)
        return Enter(chunk, 0);
    if (outer == EditorChunk && chunk.kind == MaterialChunk) {
        m_material.clear();
        return Enter(chunk, 0);
    }
    if (outer == EditorChunk && chunk.kind == ObjectChunk) {
        const std::string name = m_window.Text(content, chunk.end);
        m_object = IdOf(name);
        return Enter(chunk, name.size() + 1);
    }
    if (outer == ObjectChunk && chunk.kind == LightChunk)
        return Enter(chunk, LightPosition);
    if (outer == LightChunk && chunk.kind == SpotlightChunk)
        return Enter(chunk, SpotlightTarget);
    if (outer == MaterialChunk && chunk.kind == MaterialName)
        m_material = IdOf(m_window.Text(content, chunk.end));
    else if (outer == MaterialChunk && MapOf(chunk.kind))
        Enter(chunk, 0);
    else if (MapOf(outer) && chunk.kind == MapName)
        AddName(chunk, m_material + '/' + MapOf(outer)->name);
    else if (outer == EditorChunk && chunk.kind == BackgroundName)
        AddName(chunk, "background");
    else if (outer == SpotlightChunk && chunk.kind == ProjectorName)
        AddName(chunk, m_object + "/projector");
}

void ThreeDsDocument::Enter(const Chunk& chunk, std::uint64_t skip)
{
    m_at = std::min(chunk.begin + HeaderSize + skip, chunk.end);
    m_open.push_back(chunk);
}

/// Of an open chunk: most hold no names, and are not kept.
std::size_t ThreeDsDocument::LengthOf(std::size_t level)
{
    for (std::size_t i = 0; i <= level; ++i) {
        Chunk& chunk = m_open[i];
        if (chunk.length)
            continue;
        LengthField field{chunk.begin + 2, 4, false, chunk.end - chunk.begin, std::nullopt};
        if (i > 0)
            field.outer = m_open[i - 1].length;
        chunk.length = AddLength(field);
    }
    return *m_open[level].length;
}

void ThreeDsDocument::AddName(const Chunk& chunk, const std::string& id)
{
    NamedFile name;
    name.id = id;
    name.begin = chunk.begin + HeaderSize;
    name.raw = m_window.Text(name.begin, chunk.end);
    if (name.raw.empty())
        return;
    name.end = name.begin + name.raw.size() + 1;
    name.length = AddLength(
        {chunk.begin + 2, 4, false, chunk.end - chunk.begin, LengthOf(m_open.size() - 1)});
    Add(std::move(name));
}

std::string ThreeDsDocument::Written(const NamedFile&, const std::string& text) const
{
    return text + '\0';
}

} // namespace Halvern::Formats::Meshes
