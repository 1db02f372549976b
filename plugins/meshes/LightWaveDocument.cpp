// SPDX-License-Identifier: Apache-2.0

#include "LightWaveDocument.h"

#include "KitNames.h"
#include "base/PathText.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Meshes {

namespace {

constexpr std::uint64_t KindSize = 4;
constexpr std::uint64_t FormHeader = 12;

/// Parts begin on even places.
std::uint64_t Even(std::uint64_t size)
{
    return size + size % 2;
}

} // namespace

LightWaveDocument::LightWaveDocument(const std::filesystem::path& path)
    : MeshDocument(path), m_window(File())
{
    if (m_window.Size() < FormHeader || m_window.Bytes(0, KindSize) != "FORM")
        throw FormatError("a LightWave object begins with \"FORM\"", 0);
    m_form = {KindSize, 4, true, m_window.Big(KindSize, 4), std::nullopt};
    const std::string kind(m_window.Bytes(8, KindSize));
    const bool isOld = kind == "LWOB" || kind == "LWLO";
    if (!isOld && kind != "LWO2")
        throw FormatError("an object of the form " + IdOf(kind) + ", not LWOB, LWLO or LWO2", 8);
    const std::uint64_t end = KindSize + 4 + m_form.value;
    if (end > m_window.Size() || end < FormHeader)
        throw FormatError("the header gives a length of " + std::to_string(m_form.value) +
                              " bytes, the file has " + std::to_string(m_window.Size() - 8),
                          KindSize);
    for (std::uint64_t at = FormHeader; end - at >= KindSize + 4;) {
        const Chunk chunk = ChunkAt(at, end, 4);
        if (isOld && chunk.kind == "SURF")
            ReadSurface(chunk);
        else if (!isOld && chunk.kind == "CLIP")
            ReadClip(chunk);
        at = std::min(Even(chunk.end), end);
    }
}

LightWaveDocument::Chunk LightWaveDocument::ChunkAt(std::uint64_t offset, std::uint64_t end,
                                                    std::size_t sizeBytes)
{
    Chunk chunk;
    chunk.kind = m_window.Bytes(offset, KindSize);
    chunk.begin = offset;
    const std::uint64_t size = m_window.Big(offset + KindSize, sizeBytes);
    chunk.content = offset + KindSize + sizeBytes;
    if (size > end - chunk.content)
        throw FormatError("a chunk of " + std::to_string(size) + " bytes where " +
                              std::to_string(end - chunk.content) + " are left",
                          offset);
    chunk.end = chunk.content + size;
    return chunk;
}

/// The name of the surface, then parts: TIMG and RIMG name pictures.
void LightWaveDocument::ReadSurface(const Chunk& surface)
{
    const std::string name = m_window.Text(surface.content, surface.end);
    std::uint64_t at = surface.content + Even(name.size() + 1);
    std::string texture = "surface";
    while (at < surface.end && surface.end - at >= KindSize + 2) {
        const Chunk part = ChunkAt(at, surface.end, 2);
        if (part.kind.ends_with("TEX"))
            texture = part.kind;
        if (part.kind == "TIMG")
            AddName(part, surface, 0, IdOf(name) + '/' + texture + "/TIMG");
        else if (part.kind == "RIMG")
            AddName(part, surface, 0, IdOf(name) + "/RIMG");
        at = Even(part.end - surface.content) + surface.content;
    }
}

/// Its number, then parts: one picture, one film, or a picture with changing colours.
void LightWaveDocument::ReadClip(const Chunk& clip)
{
    if (clip.end - clip.content < 4)
        throw FormatError("a clip without a number", clip.begin);
    const std::string id = "clip " + std::to_string(m_window.Big(clip.content, 4)) + '/';
    std::uint64_t at = clip.content + 4;
    while (at < clip.end && clip.end - at >= KindSize + 2) {
        const Chunk part = ChunkAt(at, clip.end, 2);
        if (part.kind == "STIL" || part.kind == "ANIM")
            AddName(part, clip, 0, id + part.kind);
        else if (part.kind == "STCC")
            AddName(part, clip, 4, id + part.kind);
        at = Even(part.end - clip.content) + clip.content;
    }
}

void LightWaveDocument::AddName(const Chunk& inner, const Chunk& outer, std::uint64_t skip,
                                std::string id)
{
    NamedFile name;
    name.id = std::move(id);
    name.begin = inner.content + skip;
    if (name.begin >= inner.end)
        throw FormatError("a name without an end", inner.begin);
    name.raw = m_window.Text(name.begin, inner.end);
    // Old objects say so when there is no picture, or many.
    if (name.raw.empty() || name.raw == "(none)" || name.raw.ends_with(" (sequence)"))
        return;
    name.end = std::min(name.begin + Even(name.raw.size() + 1), inner.end);
    if (!m_formLength)
        m_formLength = AddLength(m_form);
    if (m_outerBegin != outer.begin) {
        m_outerBegin = outer.begin;
        m_outerLength =
            AddLength({outer.begin + KindSize, 4, true, outer.end - outer.content, m_formLength});
    }
    name.length =
        AddLength({inner.begin + KindSize, 2, true, inner.end - inner.content, m_outerLength});
    Add(std::move(name));
}

std::string LightWaveDocument::PathOf(std::string_view raw) const
{
    std::string path = Utf8OrLatin1(raw);
    if (Base::HasDrive(path) && path.size() > 2 && path[2] != '/' && path[2] != '\\')
        path.insert(2, 1, '/');
    return path;
}

/// As many bytes more as keep the places of what follows even.
std::string LightWaveDocument::Written(const NamedFile& old, const std::string& text) const
{
    std::string bytes = text + '\0';
    if ((bytes.size() ^ (old.end - old.begin)) % 2 != 0)
        bytes += '\0';
    return bytes;
}

} // namespace Halvern::Formats::Meshes
