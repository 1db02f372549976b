// SPDX-License-Identifier: Apache-2.0

#include "SourceTreeLayout.h"

#include "Groups.h"
#include "Placement.h"

#include "pluginkit/Boundary.h"
#include "pluginkit/FormatError.h"
#include "kit/PlatformFile.h"
#include "pluginkit/Utf.h"

namespace Halvern::Formats::Layout {

namespace {

bool ExistsOnDisk(const TreePath& path)
{
    return Platform::Exists(PathFromUtf8(path.Text()));
}

void AssignTargets(SyncPlugin::IFileMapping& top)
{
    std::optional<LinkedFiles> linked = CollectLinkedFiles(top);
    if (!linked)
        throw FormatError("the file or its target has no absolute path");
    PlaceFiles(*linked, HomeFolder());
    PlaceGroups(*linked);
    MoveWhatIsInTheWay(*linked, ExistsOnDisk);
    ApplyTargets(*linked);
}

WideString SourceOf(SyncPlugin::IFileMapping& mapping)
{
    WideString source(mapping.GetSourceFile(nullptr, 0) + 1, SyncPlugin::WideChar(0));
    mapping.GetSourceFile(source.data(), static_cast<int>(source.size()));
    return source;
}

} // namespace

bool SourceTreeLayout::AssignTargetPaths(SyncPlugin::IFileMapping* mapping,
                                         SyncPlugin::IFileLayoutContext* context)
{
    if (!mapping)
        return false;
    return RunLogged(context ? context->GetLogger() : nullptr, "lay out the links of",
                     SourceOf(*mapping).c_str(), [&] { AssignTargets(*mapping); });
}

} // namespace Halvern::Formats::Layout
