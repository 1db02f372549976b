// SPDX-License-Identifier: Apache-2.0

#include "SceneDocument.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"

#include <algorithm>

namespace Halvern::Formats::Scenes {

SceneDocument::SceneDocument(const std::filesystem::path& path, Find findInXml, Find findInText)
    : m_text(path)
{
    const Find find = m_text.IsXml() ? findInXml : findInText;
    m_text.Read([&](std::string_view text) { m_list = find(text); });
}

/// A name that is a folder's is no link; beside a copy it may be something else.
bool SceneDocument::IsListed(const Reference& reference, const std::string& path) const
{
    const std::filesystem::path folder = m_text.Folder();
    if (!m_list.IsLink(reference) || NamesFolder(path, folder))
        return false;
    return !reference.needsFile || NamesExistingFile(path, folder);
}

std::vector<DocumentLink> SceneDocument::Links() const
{
    std::vector<DocumentLink> links;
    for (const Reference& reference : m_list.References()) {
        std::string path = m_list.PathOf(reference, m_text.Folder());
        if (IsListed(reference, path))
            links.push_back({reference.id, std::move(path)});
    }
    return links;
}

std::optional<std::string> SceneDocument::UnlistedPathOf(const std::string& id) const
{
    const std::vector<Reference>& all = m_list.References();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Reference& known) { return known.id == id; });
    if (found == all.end())
        return std::nullopt;
    return m_list.PathOf(*found, m_text.Folder());
}

/// Those that some new path does not begin with: they go, and what they stood before is written
/// whole.
std::vector<bool> SceneDocument::PrefixesInTheWay(const NewPaths& paths) const
{
    std::vector<bool> inTheWay(m_list.Prefixes().size());
    for (const Reference& reference : m_list.References()) {
        const auto wanted = paths.find(reference.id);
        if (wanted == paths.end() || !reference.prefix)
            continue;
        const std::string& before = m_list.Prefixes()[*reference.prefix].text;
        if (wanted->second.size() <= before.size() || !wanted->second.starts_with(before))
            inTheWay[*reference.prefix] = true;
    }
    return inTheWay;
}

void SceneDocument::Rewrite(const NewPaths& paths)
{
    const std::vector<bool> inTheWay = PrefixesInTheWay(paths);
    std::vector<TextEdit> edits;
    for (const Reference& reference : m_list.References()) {
        const bool isFreed = reference.prefix && inTheWay[*reference.prefix];
        const auto wanted = paths.find(reference.id);
        if (wanted == paths.end() && !isFreed)
            continue;
        std::string path =
            wanted == paths.end() ? m_list.PathOf(reference, m_text.Folder()) : wanted->second;
        if (reference.prefix && !isFreed)
            path.erase(0, m_list.Prefixes()[*reference.prefix].text.size());
        edits.push_back({reference.span.begin, reference.span.end, Written(reference, path)});
    }
    for (std::size_t i = 0; i < inTheWay.size(); ++i) {
        const Span& span = m_list.Prefixes()[i].span;
        if (inTheWay[i])
            edits.push_back({span.begin, span.end, std::string()});
    }
    m_text.Replace(std::move(edits));
}

} // namespace Halvern::Formats::Scenes
