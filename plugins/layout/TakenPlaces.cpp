// SPDX-License-Identifier: Apache-2.0

#include "TakenPlaces.h"

namespace Halvern::Formats::Layout {

std::string NumberedName(const std::string& name, int number)
{
    return name + " (" + std::to_string(number) + ")";
}

TakenPlaces::TakenPlaces(const std::vector<LinkedFile>& files)
{
    for (const LinkedFile& file : files)
        if (file.target)
            Take(*file.target);
}

bool TakenPlaces::IsInUse(const TreePath& folder) const
{
    const std::u16string start = Key(folder) + u'/';
    const auto first = m_places.lower_bound(start);
    return first != m_places.end() && first->starts_with(start);
}

TreePath TakenPlaces::TakeFreePlace(const TreePath& wanted, const TreePath& topFolder)
{
    const TreePath folder = wanted.Folder();
    const bool isTop = folder == topFolder;
    const TreePath parent = isTop ? folder : folder.Folder();
    const std::string name = isTop ? std::string(Stem(wanted.Name())) : folder.Name();
    TreePath place = wanted;
    for (int n = 2; IsTaken(place); ++n)
        place = parent.Child(NumberedName(name, n)).Child(wanted.Name());
    Take(place);
    return place;
}

} // namespace Halvern::Formats::Layout
