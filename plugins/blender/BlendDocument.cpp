// SPDX-License-Identifier: Apache-2.0

#include "BlendDocument.h"

#include "ContentRewriter.h"

namespace Halvern::Formats::Blender {

BlendDocument::BlendDocument(const std::filesystem::path& path)
    : m_file(path), m_links(FindLinks(m_file))
{}

std::vector<DocumentLink> BlendDocument::Links() const
{
    std::vector<DocumentLink> links;
    for (const std::unique_ptr<StoredPath>& path : m_links.paths)
        path->AddLinks(links);
    return links;
}

std::optional<std::string> BlendDocument::UnlistedPathOf(const std::string& id) const
{
    for (const std::unique_ptr<StoredPath>& path : m_links.paths) {
        if (std::optional<std::string> unlisted = path->UnlistedPathOf(id))
            return unlisted;
    }
    return std::nullopt;
}

void BlendDocument::RequireTogether(const NewPaths& wanted) const
{
    for (const std::unique_ptr<StoredPath>& path : m_links.paths)
        path->RequireTogether(wanted);
}

void BlendDocument::Rewrite(const NewPaths& paths)
{
    std::vector<FileEdit> edits;
    for (const std::unique_ptr<StoredPath>& path : m_links.paths)
        path->AddEdits(paths, m_links.form, edits);
    if (!edits.empty())
        ReplaceContent(m_file, std::move(edits));
}

} // namespace Halvern::Formats::Blender
