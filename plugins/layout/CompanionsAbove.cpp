// SPDX-License-Identifier: Apache-2.0

#include "LinkedFiles.h"

namespace Halvern::Formats::Layout {

namespace {

/// The folder so many levels up; nothing when there are fewer.
std::optional<TreePath> Above(TreePath folder, std::size_t levels)
{
    if (levels > folder.parts.size())
        return {};
    folder.parts.resize(folder.parts.size() - levels);
    return folder;
}

/// Companions of the top file that are not below its folder, and to which this layout may give a
/// place.
std::vector<const LinkedFile*> CompanionsAbove(const LinkedFiles& linked)
{
    const TreePath folder = linked.files.front().source.Folder();
    std::vector<const LinkedFile*> companions;
    for (const Bond& bond : linked.bonds) {
        const LinkedFile& member = linked.files[bond.member];
        if (bond.owner == 0 && bond.set.empty() && !member.isFixed &&
            !folder.Contains(member.source.Folder()))
            companions.push_back(&member);
    }
    return companions;
}

/// Where a companion belongs, whatever the base is.
std::optional<TreePath> SamePlace(const LinkedFile& owner, const LinkedFile& member)
{
    const TreePath source = owner.source.Folder();
    const std::optional<TreePath> common = source.CommonWith(member.source.Folder());
    if (!common)
        return {};
    const std::optional<TreePath> target =
        Above(owner.target->Folder(), common->PartsBelow(source).size());
    return target ? std::optional(target->Join(common->PartsBelow(member.source))) : std::nullopt;
}

} // namespace

void RaiseBase(LinkedFiles& linked)
{
    LinkedFile& top = linked.files.front();
    const TreePath source = top.source.Folder();
    linked.sourceBase = source;
    linked.targetBase = top.target->Folder();
    // Asked once more, the layout finds what it has done.
    bool hasRoom = true;
    for (const LinkedFile* companion : CompanionsAbove(linked)) {
        linked.sourceBase =
            linked.sourceBase.CommonWith(companion->source.Folder()).value_or(linked.sourceBase);
        const std::optional<TreePath> place = SamePlace(top, *companion);
        hasRoom =
            hasRoom && place && companion->target && companion->target->Folder() == place->Folder();
    }
    const std::vector<std::string> below = linked.sourceBase.PartsBelow(source);
    if (hasRoom)
        linked.targetBase = Above(linked.targetBase, below.size()).value_or(linked.targetBase);
    else
        top.target = linked.targetBase.Join(below).Child(top.target->Name());
}

std::optional<TreePath> PlaceOfCompanion(const LinkedFiles& linked, const LinkedFile& owner,
                                         const LinkedFile& member)
{
    const std::optional<TreePath> place = SamePlace(owner, member);
    return place && linked.targetBase.Contains(place->Folder()) ? place : std::nullopt;
}

} // namespace Halvern::Formats::Layout
