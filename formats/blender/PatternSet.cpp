#include "PatternSet.h"

#include "PathText.h"

#include "common/Companions.h"
#include "common/FormatError.h"
#include "common/LinkArray.h"

#include <algorithm>
#include <system_error>

namespace Halvern::Formats::Blender {

namespace {

constexpr std::size_t MaxMembers = 1'000'000;

std::string FileNameOf(const std::filesystem::path& file)
{
    const std::u8string name = file.filename().u8string();
    return std::string(name.begin(), name.end());
}

} // namespace

std::string NamePattern::With(std::string_view part) const
{
    return std::string(before).append(part).append(after);
}

/// Adds the part of every file in the set's folder whose name follows the pattern.
void PatternSet::AddPartsOnDisk(const std::filesystem::path& folder)
{
    const std::size_t name = m_pattern.before.rfind('/') + 1;
    if (m_pattern.after.find('/') != std::string::npos)
        return;
    const std::string before = m_pattern.before.substr(name);
    const std::string& after = m_pattern.after;
    std::error_code error;
    std::filesystem::directory_iterator files(
        folder / PathFromUtf8(std::string_view(m_pattern.before).substr(0, name)), error);
    for (; !error && files != std::filesystem::directory_iterator(); files.increment(error)) {
        const std::string file = FileNameOf(files->path());
        if (file.size() <= before.size() + after.size() || !file.starts_with(before) ||
            !file.ends_with(after))
            continue;
        const std::string part =
            file.substr(before.size(), file.size() - before.size() - after.size());
        if (IsPart(part))
            AddPart(part);
        if (m_parts.size() > MaxMembers)
            throw FormatError("more than " + std::to_string(MaxMembers) + " files of " + m_id);
    }
}

void PatternSet::AddLinks(std::vector<DocumentLink>& links) const
{
    for (const std::string& part : m_parts)
        links.push_back({SetMemberId(m_id, part), m_pattern.With(part)});
}

std::optional<std::string> PatternSet::UnlistedPathOf(const std::string& id) const
{
    const std::string prefix = SetMemberId(m_id, {});
    if (!id.starts_with(prefix) || !IsPart(std::string_view(id).substr(prefix.size())))
        return std::nullopt;
    return m_pattern.With(std::string_view(id).substr(prefix.size()));
}

/// Part and path of those that are files of this set.
PatternSet::Members PatternSet::MembersOf(const NewPaths& paths) const
{
    const std::string prefix = SetMemberId(m_id, {});
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
