// SPDX-License-Identifier: Apache-2.0

#include "StoredPath.h"

#include "PathText.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "syncplugin/ReferenceIds.h"

namespace Halvern::Formats::Blender {

namespace {

/// Up to and with the last "/".
std::string FolderOf(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
}

std::string NameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

} // namespace

void SinglePath::AddLinks(std::vector<DocumentLink>& links) const
{
    links.push_back({m_id, PathOfText(m_text.value)});
}

void SinglePath::AddEdits(const NewPaths& paths, const MachineForm& form,
                          std::vector<FileEdit>& edits) const
{
    const auto path = paths.find(m_id);
    if (path != paths.end())
        AddTextEdits(m_text, TextOfPath(path->second), m_id, form, edits);
}

FolderPath::FolderPath(const std::string& id, StoredText folder, std::vector<StoredText> names)
    : m_folder(std::move(folder)), m_names(std::move(names))
{
    if (m_names.size() == 1)
        m_ids.push_back(id);
    for (std::size_t i = m_ids.size(); i < m_names.size(); ++i)
        m_ids.push_back(SyncPlugin::SetMemberId(id, std::to_string(i)));
}

std::string FolderPath::PathOf(std::size_t index) const
{
    std::string folder = PathOfText(m_folder.value);
    if (!folder.empty() && !folder.ends_with('/'))
        folder += '/';
    return folder + m_names[index].value;
}

void FolderPath::AddLinks(std::vector<DocumentLink>& links) const
{
    for (std::size_t i = 0; i < m_names.size(); ++i)
        links.push_back({m_ids[i], PathOf(i)});
}

void FolderPath::RequireTogether(const NewPaths& wanted) const
{
    std::optional<std::string> first;
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        const auto found = wanted.find(m_ids[i]);
        std::string path = found == wanted.end() ? PathOf(i) : found->second;
        if (!first)
            first = std::move(path);
        else if (FolderOf(*first) != FolderOf(path))
            throw FormatError("the files of " + m_ids.front() + " must stay in one folder, which " +
                              *first + " and " + path + " would not");
    }
}

void FolderPath::AddEdits(const NewPaths& paths, const MachineForm& form,
                          std::vector<FileEdit>& edits) const
{
    std::optional<std::string> folder;
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        const auto path = paths.find(m_ids[i]);
        if (path == paths.end())
            continue;
        folder = FolderOf(path->second);
        AddTextEdits(m_names[i], NameOf(path->second), m_ids[i], form, edits);
    }
    if (folder && *folder != FolderOf(PathOf(0)))
        AddTextEdits(m_folder, TextOfPath(*folder), m_ids.front(), form, edits);
}

} // namespace Halvern::Formats::Blender
