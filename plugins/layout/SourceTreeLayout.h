// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/IFileLayout.h"

namespace Halvern::Formats::Layout {

/// Keeps the shape of the source tree below the folder of the top file's target, see Placement.h,
/// and keeps files together that need each other's names, see Groups.h. The top file stays where
/// the import puts it, but for one case: it belongs to such a group, and the group is in the way.
class SourceTreeLayout : public SyncPlugin::IFileLayout
{
public:
    bool AssignTargetPaths(SyncPlugin::IFileMapping* mapping,
                           SyncPlugin::IFileLayoutContext* context) override;
};

} // namespace Halvern::Formats::Layout
