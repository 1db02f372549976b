// SPDX-License-Identifier: Apache-2.0

#include "MeshDocument.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Meshes {

namespace {

constexpr std::size_t MaxNames = 100'000;
constexpr std::size_t MaxText = std::size_t(64) << 20;
constexpr std::size_t MaxIdPart = 100;

/// In Latin-1 when the old name is in that and the new one can be.
std::string EncodedLike(std::string_view old, const std::string& path)
{
    if (IsUtf8(old))
        return path;
    const std::optional<WideString> units = ToUtf16(path);
    if (!units || std::any_of(units->begin(), units->end(), [](auto unit) { return unit > 0xFF; }))
        return path;
    std::string bytes;
    for (const auto unit : *units)
        bytes.push_back(static_cast<char>(unit));
    return bytes;
}

} // namespace

std::string IdOf(std::string_view name)
{
    std::string id = Utf8OrLatin1(name.substr(0, MaxIdPart));
    std::replace_if(
        id.begin(), id.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, '?');
    return id;
}

void MeshDocument::Add(NamedFile name)
{
    m_textSize += name.raw.size();
    if (m_names.size() == MaxNames || m_textSize > MaxText)
        throw FormatError("the file names too many files", name.begin);
    const std::string base = name.id;
    // Once more where a name has a number of its own.
    do {
        const std::size_t count = ++m_counts[base];
        name.id = count == 1 ? base : base + '#' + std::to_string(count);
    } while (!m_byId.emplace(name.id, m_names.size()).second);
    m_names.push_back(std::move(name));
}

std::size_t MeshDocument::AddLength(const LengthField& field)
{
    m_lengths.push_back(field);
    return m_lengths.size() - 1;
}

std::string MeshDocument::PathOf(std::string_view raw) const
{
    return Utf8OrLatin1(raw);
}

std::string MeshDocument::LinkPath(const NamedFile& name) const
{
    return WithSlashes(PathOf(name.raw), m_file.Path().parent_path());
}

std::vector<DocumentLink> MeshDocument::Links() const
{
    const std::filesystem::path folder = m_file.Path().parent_path();
    std::vector<DocumentLink> links;
    for (const NamedFile& name : m_names) {
        std::string path = LinkPath(name);
        if (NamesFolder(path, folder) || (name.needsFile && !NamesExistingFile(path, folder)))
            continue;
        links.push_back({name.id, std::move(path)});
    }
    return links;
}

std::optional<std::string> MeshDocument::UnlistedPathOf(const std::string& id) const
{
    const auto found = m_byId.find(id);
    if (found == m_byId.end())
        return std::nullopt;
    return LinkPath(m_names[found->second]);
}

/// Adds what all lengths around a name grow by.
void MeshDocument::Grow(std::map<std::size_t, std::int64_t>& growth, const NamedFile& name,
                        std::size_t newSize) const
{
    const auto more =
        static_cast<std::int64_t>(newSize) - static_cast<std::int64_t>(name.end - name.begin);
    for (std::optional<std::size_t> at = name.length; at; at = m_lengths[*at].outer)
        growth[*at] += more;
}

std::string MeshDocument::NewLength(std::size_t index, std::int64_t growth) const
{
    const LengthField& field = m_lengths[index];
    const std::uint64_t value = field.value + static_cast<std::uint64_t>(growth);
    if (value >> (8 * field.size) != 0)
        throw FormatError("the new paths make a part of the file longer than it can be", field.at);
    std::string bytes;
    for (std::size_t i = 0; i < field.size; ++i)
        bytes.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    if (field.isBigEndian)
        std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

void MeshDocument::Rewrite(const NewPaths& paths)
{
    std::vector<FileEdit> edits;
    std::map<std::size_t, std::int64_t> growth;
    for (const auto& [id, path] : paths) {
        const auto found = m_byId.find(id);
        if (found == m_byId.end())
            continue;
        const NamedFile& name = m_names[found->second];
        std::string written = Written(name, EncodedLike(name.raw, path));
        Grow(growth, name, written.size());
        edits.push_back({name.begin, name.end, std::move(written)});
    }
    for (const auto& [index, more] : growth) {
        const LengthField& field = m_lengths[index];
        if (more != 0)
            edits.push_back({field.at, field.at + field.size, NewLength(index, more)});
    }
    ReplaceSpans(m_file, std::move(edits));
}

} // namespace Halvern::Formats::Meshes
