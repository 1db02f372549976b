// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Halvern::SyncPlugin {

// A reference id is the resolver's own: the host stores it, hands it back in RepathFileLinks and
// reads nothing out of it. Two beginnings have a meaning that resolvers share with layouts. They
// mark links that cannot be rewritten, or not freely, because the file stores no path of their own:
// a layout (the children's IFileMapping::GetRefId) keeps such files together under their own names.
// A host without a layout for the type places them as any other file.
// DO NOT CHANGE THESE TEXTS: ids are stored in the sync database.

/// Begins the id of a link that the file finds by name: the linked file keeps its name and its
/// place relative to the folder of the file that links it.
///
///     board.kicad_pro finds board.kicad_sch and sym-lib-table beside itself
inline constexpr std::string_view CompanionMark = "companion:";

/// Begins the id of a member of a set, of which the file stores one name pattern: all members keep
/// their names and stay in one folder. Members of one set have ids that are equal up to the last
/// "#".
///
///     wood.<UDIM>.png: "set:IMwood#1001", "set:IMwood#1002"
inline constexpr std::string_view SetMark = "set:";

inline std::string CompanionId(std::string_view name)
{
    return std::string(CompanionMark).append(name);
}

/// The last "#" ends the set's name: `member` must hold none.
inline std::string SetMemberId(std::string_view set, std::string_view member)
{
    return std::string(SetMark).append(set).append("#").append(member);
}

} // namespace Halvern::SyncPlugin
