// SPDX-License-Identifier: Apache-2.0

#include "GltfDocument.h"

#include "KitNames.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/LinkPaths.h"

#include "pluginkit/FormatError.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/TextEdits.h"

namespace Halvern::Formats::Gltf {

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

std::string ReadPlain(const InputFile& file)
{
    if (file.Size() > MaxDocumentSize)
        throw FormatError("the document is larger than 1 GiB");
    return file.Read(0, file.Size());
}

std::vector<UriString> FindUrisBehindMark(std::string_view json, std::uint64_t position)
{
    const std::size_t skip = json.starts_with(ByteOrderMark) ? ByteOrderMark.size() : 0;
    std::vector<UriString> uris = FindUris(json.substr(skip), position + skip);
    for (UriString& uri : uris) {
        uri.begin += skip;
        uri.end += skip;
    }
    return uris;
}

} // namespace

GltfDocument::GltfDocument(const std::filesystem::path& path) : m_file(path)
{
    if (IsGlb(m_file))
        m_glb = ReadGlbLayout(m_file);
    m_json = m_glb ? m_file.Read(m_glb->jsonBegin, m_glb->jsonSize) : ReadPlain(m_file);
    m_uris = FindUrisBehindMark(m_json, m_glb ? m_glb->jsonBegin : 0);
    m_byId.reserve(m_uris.size());
    for (std::size_t i = 0; i < m_uris.size(); ++i)
        m_byId.emplace(m_uris[i].id, i);
}

std::string GltfDocument::PathOf(const UriString& uri) const
{
    return PathOfUri(uri.value, m_file.Path().parent_path());
}

std::vector<DocumentLink> GltfDocument::Links() const
{
    std::vector<DocumentLink> links;
    links.reserve(m_uris.size());
    for (const UriString& uri : m_uris) {
        std::string path = PathOf(uri);
        if (!NamesFolder(path, m_file.Path().parent_path()))
            links.push_back({uri.id, std::move(path)});
    }
    return links;
}

std::optional<std::string> GltfDocument::UnlistedPathOf(const std::string& id) const
{
    const auto found = m_byId.find(id);
    if (found == m_byId.end())
        return std::nullopt;
    return PathOf(m_uris[found->second]);
}

void GltfDocument::Rewrite(const NewPaths& paths)
{
    std::vector<TextEdit> edits;
    for (const UriString& uri : m_uris) {
        const auto wanted = paths.find(uri.id);
        if (wanted != paths.end())
            edits.push_back({uri.begin, uri.end, '"' + UriOfPath(wanted->second) + '"'});
    }
    Replace(ApplyEdits(m_json, std::move(edits)));
}

void GltfDocument::Replace(std::string json)
{
    ReplacementFile replacement(m_file);
    if (m_glb) {
        replacement.Write(GlbHead(*m_glb, std::move(json)));
        replacement.CopyFromSource(m_glb->restBegin, m_glb->restSize);
    } else {
        replacement.Write(json);
    }
    replacement.Commit();
}

} // namespace Halvern::Formats::Gltf
