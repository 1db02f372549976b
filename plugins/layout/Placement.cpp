// SPDX-License-Identifier: Apache-2.0

#include "Placement.h"

#include "TakenPlaces.h"

#include <algorithm>
#include <map>
#include <set>

namespace Halvern::Formats::Layout {

namespace {

/// Where the files below one source folder go: below that many folders of the top file's target.
struct Origin
{
    TreePath folder;
    std::vector<std::string> place;
};

class Placement
{
public:
    Placement(LinkedFiles& linked, const std::optional<TreePath>& home)
        : m_files(linked.files), m_home(home), m_topFolder(linked.sourceBase),
          m_targetFolder(linked.targetBase)
    {}

    void Run()
    {
        FindProject();
        GatherOtherPlaces();
        UseNamesBesideTop();
        PlaceProject();
        PlaceOthers();
        AssignTargets();
    }

private:
    bool IsProjectFolder(const TreePath& folder) const;
    /// The folder, or the one above it nearest to the root, that can be a project's.
    TreePath OutermostProjectFolder(const TreePath& folder) const;
    std::optional<TreePath> CommonProjectFolder(const TreePath& file) const;
    void FindProject();
    bool IsBelowTop(const LinkedFile& file) const
    {
        return m_topFolder.Contains(file.source.Folder());
    }
    bool IsOfProject(const LinkedFile& file) const
    {
        return m_project.folder.Contains(file.source.Folder());
    }
    void GatherOtherPlaces();
    void UseNamesBesideTop();
    void PlaceProject();
    void PlaceOthers();
    std::string UnusedName(const TreePath& folder);
    const Origin& OriginOf(const LinkedFile& file) const;
    void AssignTargets();

    std::vector<LinkedFile>& m_files;
    const std::optional<TreePath>& m_home;
    TreePath m_topFolder;
    TreePath m_targetFolder;
    Origin m_below;
    Origin m_project;
    /// By the text of the outermost folder.
    std::map<std::string, Origin> m_others;
    /// Names in the target folder, letter case aside.
    std::set<std::u16string> m_names;
};

bool Placement::IsProjectFolder(const TreePath& folder) const
{
    // "/usr" or "/tmp" hold everything; "D:/work" may well be a project.
    const std::size_t depth = folder.root.empty() ? 2 : 1;
    if (folder.parts.size() < depth)
        return false;
    // Neither the home folder, nor one above it, nor another user's.
    return !m_home || m_home->parts.empty() ||
           !(folder.Contains(*m_home) || folder.Folder() == m_home->Folder());
}

TreePath Placement::OutermostProjectFolder(const TreePath& folder) const
{
    TreePath outer = folder;
    outer.parts.clear();
    for (const std::string& part : folder.parts) {
        outer.parts.push_back(part);
        if (IsProjectFolder(outer))
            return outer;
    }
    return folder;
}

std::optional<TreePath> Placement::CommonProjectFolder(const TreePath& file) const
{
    std::optional<TreePath> common = m_topFolder.CommonWith(file.Folder());
    if (common && !(*common == m_topFolder) && !IsProjectFolder(*common))
        common.reset();
    return common;
}

void Placement::FindProject()
{
    m_below.folder = m_topFolder;
    m_project.folder = m_topFolder;
    for (const LinkedFile& file : m_files) {
        // A lost file says nothing about the project.
        if (file.isMissing)
            continue;
        const std::optional<TreePath> common = CommonProjectFolder(file.source);
        if (common && common->Contains(m_project.folder))
            m_project.folder = *common;
    }
}

void Placement::GatherOtherPlaces()
{
    for (const LinkedFile& file : m_files) {
        if (IsOfProject(file))
            continue;
        const TreePath folder = file.source.Folder();
        const auto [known, isNew] =
            m_others.emplace(OutermostProjectFolder(folder).Text(), Origin{folder, {}});
        if (!isNew)
            known->second.folder = known->second.folder.CommonWith(folder).value_or(folder);
    }
}

void Placement::UseNamesBesideTop()
{
    m_names.insert(CaseKey(m_targetFolder.PartsBelow(*m_files.front().target).front()));
    for (const LinkedFile& file : m_files)
        if (IsBelowTop(file))
            m_names.insert(CaseKey(m_topFolder.PartsBelow(file.source).front()));
}

void Placement::PlaceProject()
{
    std::set<std::u16string> names;
    for (const LinkedFile& file : m_files)
        if (IsOfProject(file) && !IsBelowTop(file))
            names.insert(CaseKey(m_project.folder.PartsBelow(file.source).front()));
    const bool isFree =
        std::none_of(names.begin(), names.end(),
                     [this](const std::u16string& name) { return m_names.contains(name); });
    if (isFree)
        m_names.merge(names);
    else
        m_project.place = {UnusedName(m_project.folder)};
}

void Placement::PlaceOthers()
{
    for (auto& [outermost, origin] : m_others)
        origin.place = {UnusedName(origin.folder)};
}

std::string Placement::UnusedName(const TreePath& folder)
{
    std::string name = folder.Name();
    if (name.empty())
        name = folder.root.size() == 2 ? folder.root.substr(0, 1) : "root";
    std::string unused = name;
    for (int n = 2; !m_names.insert(CaseKey(unused)).second; ++n)
        unused = NumberedName(name, n);
    return unused;
}

const Origin& Placement::OriginOf(const LinkedFile& file) const
{
    if (IsBelowTop(file))
        return m_below;
    if (IsOfProject(file))
        return m_project;
    return m_others.at(OutermostProjectFolder(file.source.Folder()).Text());
}

void Placement::AssignTargets()
{
    TakenPlaces taken(m_files);
    for (LinkedFile& file : m_files) {
        if (file.target)
            continue;
        const Origin& origin = OriginOf(file);
        const TreePath wanted =
            m_targetFolder.Join(origin.place).Join(origin.folder.PartsBelow(file.source));
        file.target = taken.TakeFreePlace(wanted, m_targetFolder);
    }
}

} // namespace

void PlaceFiles(LinkedFiles& linked, const std::optional<TreePath>& home)
{
    Placement(linked, home).Run();
}

} // namespace Halvern::Formats::Layout
