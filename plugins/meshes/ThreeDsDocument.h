// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileWindow.h"
#include "MeshDocument.h"

namespace Halvern::Formats::Meshes {

/// A 3D Studio file (.3ds): chunks in chunks, each with its length. Its names are those of pictures
/// of materials, of the background and of projectors.
class ThreeDsDocument : public MeshDocument
{
public:
    explicit ThreeDsDocument(const std::filesystem::path& path);

protected:
    std::string Written(const NamedFile& old, const std::string& text) const override;

private:
    struct Chunk
    {
        std::uint32_t kind = 0;
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        std::optional<std::size_t> length;
    };

    Chunk ChunkAt(std::uint64_t offset, std::uint64_t end);
    void Visit(const Chunk& chunk);
    void Enter(const Chunk& chunk, std::uint64_t skip);
    void AddName(const Chunk& chunk, const std::string& id);
    std::size_t LengthOf(std::size_t level);

    FileWindow m_window;
    std::vector<Chunk> m_open;
    std::uint64_t m_at = 0;
    std::string m_material;
    std::string m_object;
};

} // namespace Halvern::Formats::Meshes
