// SPDX-License-Identifier: Apache-2.0

#include "Groups.h"

#include "TakenPlaces.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <utility>

namespace Halvern::Formats::Layout {

namespace {

using Members = std::vector<std::size_t>;

/// The name of a companion beside its owner: another one only when it shares the base name of an
/// owner that is imported under another name.
std::string NameBeside(const LinkedFile& owner, const LinkedFile& member)
{
    const std::string name = member.source.Name();
    const std::string ownerName = owner.source.Name();
    const std::string targetName = owner.target->Name();
    return Stem(name) == Stem(ownerName) ? std::string(Stem(targetName)).append(Suffix(name))
                                         : name;
}

class GroupPlacement
{
public:
    explicit GroupPlacement(LinkedFiles& linked)
        : m_linked(linked), m_files(linked.files), m_bonds(linked.bonds), m_taken(linked.files)
    {
        m_settled.insert(0);
    }

    void Run()
    {
        std::map<std::pair<std::size_t, std::string>, Members> sets;
        for (const Bond& bond : m_bonds) {
            m_files[bond.member].keepsName = true;
            if (bond.set.empty())
                PlaceCompanion(m_files[bond.owner], bond.member);
            else
                sets[{bond.owner, bond.set}].push_back(bond.member);
        }
        for (const auto& [key, members] : sets)
            PlaceSet(members);
    }

private:
    void PlaceCompanion(LinkedFile& owner, std::size_t index);
    void PlaceSet(const Members& members);
    std::size_t AnchorOf(const Members& members) const;
    void Place(std::size_t index, const TreePath& wanted);

    const LinkedFiles& m_linked;
    std::vector<LinkedFile>& m_files;
    const std::vector<Bond>& m_bonds;
    TakenPlaces m_taken;
    std::set<std::size_t> m_settled;
};

void GroupPlacement::Place(std::size_t index, const TreePath& wanted)
{
    LinkedFile& file = m_files[index];
    if (file.isFixed || !m_settled.insert(index).second || wanted == *file.target ||
        m_taken.IsTaken(wanted))
        return;
    m_taken.Take(wanted);
    file.target = wanted;
}

void GroupPlacement::PlaceCompanion(LinkedFile& owner, std::size_t index)
{
    const LinkedFile& member = m_files[index];
    if (Stem(owner.source.Name()) == Stem(member.source.Name()))
        owner.keepsName = true;
    if (const std::optional<TreePath> place = PlaceOfCompanion(m_linked, owner, member))
        Place(index, place->Folder().Child(NameBeside(owner, member)));
}

/// The member that tells where the set is.
std::size_t GroupPlacement::AnchorOf(const Members& members) const
{
    const auto find = [&](const auto& isAnchor) {
        return std::find_if(members.begin(), members.end(), isAnchor);
    };
    auto anchor =
        find([this](std::size_t i) { return m_files[i].isFixed || m_settled.contains(i); });
    if (anchor == members.end())
        anchor = find([this](std::size_t i) { return m_files[i].wasPlaced; });
    return anchor == members.end() ? members.front() : *anchor;
}

void GroupPlacement::PlaceSet(const Members& members)
{
    const LinkedFile& anchor = m_files[AnchorOf(members)];
    const TreePath source = anchor.source.Folder();
    const TreePath target = anchor.target->Folder();
    for (const std::size_t index : members)
        if (m_files[index].source.Folder() == source)
            Place(index, target.Child(m_files[index].source.Name()));
}

/// Files that are joined by bonds, at one or more removes.
class Groups
{
public:
    explicit Groups(const LinkedFiles& linked) : m_parents(linked.files.size())
    {
        std::iota(m_parents.begin(), m_parents.end(), std::size_t(0));
        for (const Bond& bond : linked.bonds)
            if (bond.set.empty())
                Join(bond.owner, bond.member);
        JoinSets(linked.bonds);
        m_members.resize(m_parents.size());
        for (std::size_t index = 0; index < m_parents.size(); ++index)
            m_members[HeadOf(index)].push_back(index);
    }

    /// The first file of the group.
    std::size_t HeadOf(std::size_t index)
    {
        while (m_parents[index] != index)
            index = m_parents[index] = m_parents[m_parents[index]];
        return index;
    }

    /// The files of the group of which this is the first.
    const Members& MembersOf(std::size_t head) const { return m_members[head]; }

private:
    void Join(std::size_t a, std::size_t b)
    {
        const auto [first, second] = std::minmax({HeadOf(a), HeadOf(b)});
        m_parents[second] = first;
    }

    /// The owner of a set does not belong to it: it can go by another name.
    void JoinSets(const std::vector<Bond>& bonds)
    {
        std::map<std::pair<std::size_t, std::string>, std::size_t> first;
        for (const Bond& bond : bonds)
            if (!bond.set.empty())
                Join(first.emplace(std::pair(bond.owner, bond.set), bond.member).first->second,
                     bond.member);
    }

    std::vector<std::size_t> m_parents;
    std::vector<Members> m_members;
};

class Mover
{
public:
    Mover(LinkedFiles& linked, const Exists& exists)
        : m_files(linked.files), m_base(linked.targetBase), m_exists(exists), m_groups(linked),
          m_taken(linked.files)
    {
        for (std::size_t index = 0; index < m_files.size(); ++index)
            m_inFolder[m_files[index].source.Folder().Text()].push_back(index);
        for (std::size_t index = 0; index < m_files.size(); ++index)
            if (m_files[index].isFixed)
                m_fixedGroups.insert(m_groups.HeadOf(index));
    }

    void Run()
    {
        for (std::size_t index = 0; index < m_files.size(); ++index) {
            const LinkedFile& file = m_files[index];
            if (!file.mustMove)
                continue;
            if (file.keepsName && file.existsInTarget)
                MoveGroup(m_groups.HeadOf(index));
            else if (!file.existsInTarget && !IsBoundToFixed(index))
                MoveNeighbours(file);
        }
    }

private:
    /// A file to which the import itself gave its target is in the group.
    bool IsBoundToFixed(std::size_t index)
    {
        return m_fixedGroups.contains(m_groups.HeadOf(index));
    }
    void MoveGroup(std::size_t head);
    void MoveNeighbours(const LinkedFile& file);
    void Move(const Members& members, const TreePath& old, const TreePath& folder);

    std::vector<LinkedFile>& m_files;
    const TreePath& m_base;
    const Exists& m_exists;
    Groups m_groups;
    TakenPlaces m_taken;
    /// By the text of the source folder.
    std::map<std::string, Members> m_inFolder;
    /// By their first files.
    std::set<std::size_t> m_fixedGroups;
};

void Mover::MoveGroup(std::size_t head)
{
    TreePath old = m_files[head].target->Folder();
    for (const std::size_t index : m_groups.MembersOf(head))
        old = old.CommonWith(m_files[index].target->Folder()).value_or(old);
    const std::string stem(Stem(m_files[head].source.Name()));
    TreePath folder = old;
    for (int n = 2; folder == old || m_taken.IsInUse(folder) || m_exists(folder); ++n)
        folder = old.Child(NumberedName(stem, n));
    Move(m_groups.MembersOf(head), old, folder);
}

void Mover::MoveNeighbours(const LinkedFile& file)
{
    const TreePath old = file.target->Folder();
    const TreePath& top = m_base;
    const TreePath own = top.Child(std::string(Stem(m_files.front().target->Name())));
    std::set<std::size_t> moving;
    for (const std::size_t index : m_inFolder[file.source.Folder().Text()])
        if (m_files[index].target->Folder() == old && !IsBoundToFixed(index)) {
            const Members& group = m_groups.MembersOf(m_groups.HeadOf(index));
            moving.insert(group.begin(), group.end());
        }
    Move({moving.begin(), moving.end()}, old,
         top.Contains(old) ? own.Join(top.PartsBelow(old)) : own);
}

/// Moves what was below the folder `old` to the same place below `folder`.
void Mover::Move(const Members& members, const TreePath& old, const TreePath& folder)
{
    for (const std::size_t index : members) {
        LinkedFile& file = m_files[index];
        const TreePath target = *file.target;
        const TreePath wanted = old.Contains(target) ? folder.Join(old.PartsBelow(target))
                                                     : folder.Child(target.Name());
        file.target = m_taken.TakeFreePlace(wanted, m_base);
        file.mustMove = false;
    }
}

} // namespace

void PlaceGroups(LinkedFiles& linked)
{
    GroupPlacement(linked).Run();
}

void MoveWhatIsInTheWay(LinkedFiles& linked, const Exists& exists)
{
    Mover(linked, exists).Run();
}

} // namespace Halvern::Formats::Layout
