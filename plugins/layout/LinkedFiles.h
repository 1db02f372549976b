// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "TreePath.h"

#include "syncplugin/IFileLayout.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Halvern::Formats::Layout {

/// A file of the import, once, however many links lead to it.
struct LinkedFile
{
    TreePath source;
    /// Empty until it has a place.
    std::optional<TreePath> target;
    /// The import itself gave it its target: the top file and other files of the selection.
    bool isFixed = false;
    /// An earlier import, or this one for another top file, gave it its target.
    bool wasPlaced = false;
    /// Something stands at its target, and it is to get another place.
    bool mustMove = false;
    bool existsInTarget = false;
    bool isMissing = false;
    /// The name has a meaning for another file.
    bool keepsName = false;
    /// Null in plans that are made without a host.
    SyncPlugin::IFileMapping* node = nullptr;
};

/// A link by name, or the link to a member of a set; see syncplugin/ReferenceIds.h.
struct Bond
{
    std::size_t owner;
    std::size_t member;
    /// Empty for a companion; what the ids of all members begin with for a set.
    std::string set;
};

/// What a layout works on. The first file is the top file; each other file stands after one that
/// links it.
struct LinkedFiles
{
    std::vector<LinkedFile> files;
    std::vector<Bond> bonds;
};

/// Collects the files below `top`. Each file's links are asked for once, though the tree shows a
/// shared file once for every path that leads to it. Files whose places are not paths of this
/// machine are left out; nothing when the top file is one.
std::optional<LinkedFiles> CollectLinkedFiles(SyncPlugin::IFileMapping& top);

/// Hands the targets that differ from those collected, and the flags, to the host.
void ApplyTargets(const LinkedFiles& linked);

} // namespace Halvern::Formats::Layout
