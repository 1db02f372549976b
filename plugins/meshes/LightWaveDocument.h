// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileWindow.h"
#include "MeshDocument.h"

namespace Halvern::Formats::Meshes {

/// A LightWave object (.lwo) of the forms LWOB, LWLO and LWO2: pictures of surfaces and clips.
class LightWaveDocument : public MeshDocument
{
public:
    explicit LightWaveDocument(const std::filesystem::path& path);

protected:
    /// "C:pictures/wood.png" has no slash after the drive.
    std::string PathOf(std::string_view raw) const override;
    std::string Written(const NamedFile& old, const std::string& text) const override;

private:
    struct Chunk
    {
        std::string kind;
        std::uint64_t begin = 0;
        std::uint64_t content = 0;
        std::uint64_t end = 0;
    };

    Chunk ChunkAt(std::uint64_t offset, std::uint64_t end, std::size_t sizeBytes);
    void ReadSurface(const Chunk& surface);
    void ReadClip(const Chunk& clip);
    void AddName(const Chunk& inner, const Chunk& outer, std::uint64_t skip, std::string id);

    FileWindow m_window;
    LengthField m_form;
    std::optional<std::size_t> m_formLength;
    /// The last part that had a name in it, and its length.
    std::uint64_t m_outerBegin = 0;
    std::size_t m_outerLength = 0;
};

} // namespace Halvern::Formats::Meshes
