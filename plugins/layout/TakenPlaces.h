// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LinkedFiles.h"

#include <set>
#include <string>

namespace Halvern::Formats::Layout {

/// "name (2)"
std::string NumberedName(const std::string& name, int number);

/// Places that files of the import have, letter case aside.
class TakenPlaces
{
public:
    explicit TakenPlaces(const std::vector<LinkedFile>& files);

    bool IsTaken(const TreePath& place) const { return m_places.contains(Key(place)); }
    /// A file is in this folder, at any depth.
    bool IsInUse(const TreePath& folder) const;
    /// `wanted`, or when that is taken a place of the same name in a folder beside it: `topFolder`
    /// itself gets a folder in it.
    TreePath TakeFreePlace(const TreePath& wanted, const TreePath& topFolder);
    void Take(const TreePath& place) { m_places.insert(Key(place)); }

private:
    static std::u16string Key(const TreePath& place) { return CaseKey(place.Text()); }

    std::set<std::u16string> m_places;
};

} // namespace Halvern::Formats::Layout
