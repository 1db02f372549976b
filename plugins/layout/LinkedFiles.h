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
    /// Nothing lies above these: the source folder whose shape is kept, and where it goes. They are
    /// the top file's own, unless that has a companion further up (see RaiseBase).
    TreePath sourceBase;
    TreePath targetBase;
};

/// Collects the files below `top`. Each file's links are asked for once, though the tree shows a
/// shared file once for every path that leads to it. Files whose places are not paths of this
/// machine are left out; nothing when the top file is one.
std::optional<LinkedFiles> CollectLinkedFiles(SyncPlugin::IFileMapping& top);

/// Makes room above the top file for companions that it finds further up, and sets the bases: the
/// top file goes down as many folders as its source lies below theirs.
///
///     models/case.scad finds ../logo.stl:  Demo/case.scad  ->  Demo/models/case.scad
///                                                              Demo/logo.stl
///
/// Requires: the top file has a target.
void RaiseBase(LinkedFiles& linked);

/// The place that a file's companion has with respect to it, which is that of their sources;
/// nothing when it would be above the base, or on another drive.
std::optional<TreePath> PlaceOfCompanion(const LinkedFiles& linked, const LinkedFile& owner,
                                         const LinkedFile& member);

/// Hands the targets that differ from those collected, and the flags, to the host.
void ApplyTargets(const LinkedFiles& linked);

} // namespace Halvern::Formats::Layout
