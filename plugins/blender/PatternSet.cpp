// SPDX-License-Identifier: Apache-2.0

#include "PatternSet.h"

#include "PathText.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "syncplugin/ReferenceIds.h"

#include <algorithm>

namespace Halvern::Formats::Blender {

std::string NamePattern::With(std::string_view part) const
{
    return std::string(before).append(part).append(after);
}

/// Adds the part of every file in the set's folder whose name follows the pattern.
void PatternSet::AddPartsOnDisk(FolderNames& folders)
{
    if (m_pattern.after.find('/') != std::string::npos)
        return;
    const std::size_t name = m_pattern.before.rfind('/') + 1;
    const std::string before = m_pattern.before.substr(name);
    const std::string& after = m_pattern.after;
    for (const std::string& file : folders.NamesWith(m_pattern.before.substr(0, name), before)) {
        if (file.size() <= before.size() + after.size() || !file.ends_with(after))
            continue;
        const std::string part =
            file.substr(before.size(), file.size() - before.size() - after.size());
        if (IsPart(part))
            AddPart(part);
    }
}

void PatternSet::AddLinks(std::vector<DocumentLink>& links) const
{
    for (const std::string& part : m_parts)
        links.push_back({SyncPlugin::SetMemberId(m_id, part), m_pattern.With(part)});
}

std::optional<std::string> PatternSet::UnlistedPathOf(const std::string& id) const
{
    const std::string prefix = SyncPlugin::SetMemberId(m_id, {});
    if (!id.starts_with(prefix) || !IsPart(std::string_view(id).substr(prefix.size())))
        return std::nullopt;
    return m_pattern.With(std::string_view(id).substr(prefix.size()));
}

/// Part and path of those that are files of this set.
PatternSet::Members PatternSet::MembersOf(const NewPaths& paths) const
{
    const std::string prefix = SyncPlugin::SetMemberId(m_id, {});
    Members members;
    for (auto path = paths.lower_bound(prefix);
         path != paths.end() && path->first.starts_with(prefix); ++path) {
        std::string part = path->first.substr(prefix.size());
        if (IsPart(part))
            members.emplace_back(std::move(part), path->second);
    }
    return members;
}

NamePattern PatternSet::NewPattern(const Members& members) const
{
    const auto& [firstPart, firstPath] = members.front();
    std::string offender = firstPath;
    for (NamePattern& pattern : PatternsOf(firstPath, firstPart)) {
        const auto other = std::find_if(members.begin(), members.end(), [&](const auto& member) {
            return pattern.With(member.first) != member.second;
        });
        if (other == members.end())
            return std::move(pattern);
        offender = other->second;
    }
    const std::string names = offender == firstPath ? m_pattern.With(firstPart) + " as " + firstPath
                                                    : firstPath + " together with " + offender;
    throw FormatError(
        "the files of " + m_id +
        " are found by one folder and one name pattern, which would be torn apart: " + names);
}

void PatternSet::RequireTogether(const NewPaths& wanted) const
{
    const Members members = MembersOf(wanted);
    if (!members.empty())
        NewPattern(members);
}

void PatternSet::AddEdits(const NewPaths& paths, const MachineForm& form,
                          std::vector<FileEdit>& edits) const
{
    const Members members = MembersOf(paths);
    if (!members.empty())
        AddTextEdits(m_text, TextOfPath(NewPattern(members).With(m_stored)), m_id, form, edits);
}

} // namespace Halvern::Formats::Blender
