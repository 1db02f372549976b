// SPDX-License-Identifier: Apache-2.0

#include "SourceTreeLayout.h"

#include "Groups.h"
#include "Placement.h"

#include "KitNames.h"
#include "base/FileStatus.h"
#include "pluginkit/Boundary.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

namespace Halvern::Formats::Layout {

namespace {

bool ExistsOnDisk(const TreePath& path)
{
    return Base::Exists(PathFromUtf8(path.Text()));
}

void AssignTargets(SyncPlugin::IFileMapping& top)
{
    std::optional<LinkedFiles> linked = CollectLinkedFiles(top);
    if (!linked)
        throw FormatError("the file or its target has no absolute path");
    RaiseBase(*linked);
    PlaceFiles(*linked, HomeFolder());
    PlaceGroups(*linked);
    MoveWhatIsInTheWay(*linked, ExistsOnDisk);
    ApplyTargets(*linked);
}

} // namespace

bool SourceTreeLayout::AssignTargetPaths(SyncPlugin::IFileMapping* mapping,
                                         SyncPlugin::IFileLayoutContext* context)
{
    if (!mapping)
        return false;
    return RunGuarded(context, "lay out the links of", mapping, [&] { AssignTargets(*mapping); });
}

} // namespace Halvern::Formats::Layout
