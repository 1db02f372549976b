// SPDX-License-Identifier: Apache-2.0

#include "SlvsDocument.h"

#include "KitNames.h"
#include "pluginkit/FileEdits.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

namespace Halvern::Formats::SolveSpace {

namespace {

void RequireFitsLine(const std::string& path)
{
    if (path.find_first_of("\r\n") != std::string::npos)
        throw FormatError("a model cannot hold the path " + path);
}

} // namespace

SlvsDocument::SlvsDocument(const std::filesystem::path& path)
    : m_file(path), m_paths(FindSlvsPaths(m_file))
{
    for (std::size_t i = 0; i < m_paths.size(); ++i)
        m_byId.emplace(m_paths[i].id, i);
}

std::string SlvsDocument::PathOf(const SlvsPath& path) const
{
    return WithSlashes(Utf8OrLatin1(path.raw), Folder());
}

std::vector<DocumentLink> SlvsDocument::Links() const
{
    std::vector<DocumentLink> links;
    for (const SlvsPath& found : m_paths) {
        std::string path = PathOf(found);
        const bool isStale = found.isSpare && !NamesExistingFile(path, Folder());
        if (!isStale && !NamesFolder(path, Folder()))
            links.push_back({found.id, std::move(path)});
    }
    return links;
}

std::optional<std::string> SlvsDocument::UnlistedPathOf(const std::string& id) const
{
    const auto found = m_byId.find(id);
    if (found == m_byId.end())
        return std::nullopt;
    return PathOf(m_paths[found->second]);
}

void SlvsDocument::Rewrite(const NewPaths& paths)
{
    std::vector<FileEdit> edits;
    for (const SlvsPath& path : m_paths) {
        const auto wanted = paths.find(path.id);
        if (wanted == paths.end())
            continue;
        RequireFitsLine(wanted->second);
        edits.push_back({path.begin, path.end, wanted->second});
    }
    ReplaceSpans(m_file, std::move(edits));
}

} // namespace Halvern::Formats::SolveSpace
