// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/ImportRequest.h"
#include "corsync/Plan.h"

#include "filelink/FileSet.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Jobs {

using TargetByFile = QHash<const SyncServices::FileMapping*, QString>;

/// The target of each file.
TargetByFile TargetsOf(FileLink::FileSet& fileSet);

/// After MarkCollisions, which sends a linked file back to its last copy: one whose name must stay
/// returns to the place that a layout gave it, since another file looks for it there, and collides
/// with what stands in that place. `places` are the targets from before MarkCollisions.
void KeepWhereTheyAreLookedFor(FileLink::FileSet& fileSet, const TargetByFile& places);

/// After MarkCollisions: files that cannot stay where a layout put them, because another file of
/// the import goes there, or because something stands there and their names must stay while the
/// policy is to rename. They are marked as colliding and to be renamed, for layouts to see when
/// they are asked once more.
FileLink::FileSet::FileMappingList MarkForAnotherPlace(FileLink::FileSet& fileSet,
                                                       const ImportRequest& request);

/// After ResolveCollisions, which asks only the disk for free names: gives files of one import that
/// got the same target different ones, where the policy allows, and lists what must not be copied
/// as it stands, in the set's order. Paths that differ in letter case only are the same. New names
/// are made from the wanted targets: those before collisions were resolved.
QList<Conflict> SettleTargets(FileLink::FileSet& files, const ImportRequest& request,
                              const TargetByFile& wanted);

} // namespace Halvern::Jobs
