// SPDX-License-Identifier: Apache-2.0

#include "stages/TargetAssignment.h"
#include "fileset/FileSetImp.h"

#include "plugins/PluginLogger.h"
#include "plugins/PluginManager.h"
#include "stages/DefaultLayout.h"

namespace Halvern::FileLink::Stages {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

FileMappingList FilesWithSkippedLinks(FileSet& fileSet)
{
    return fileSet.GetFiles(FileMapping::SkipFileLinks, FileMapping::NoFlag, FileMapping::Folder,
                            FileMapping::NoFlag);
}

bool AssignPluginTargetPaths(const StageContext& context, const StageContext::NodePointer& node)
{
    PluginManager* const manager = context.services->Plugins();
    if (!node || !node->Mapping() || !manager)
        return false;
    FileLayoutContext call(
        CallProblems(context.problems.get(), Stage::AssignTargetPaths, node->SourceFile()));
    return manager->AssignTargetPaths(node, &call);
}

bool AssignPaths(const StageContext& context)
{
    if (context.fileSet && !context.HasFilesWhichSupportFileLinks())
        return true;
    FILELINK_LOG_FOR(Operation::AssignTargetPaths, LogLevel::Info,
                     QStringLiteral("Begin assigning target paths for file links"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished assigning target paths"));
    if (!context.fileSet)
        return false;

    const QList<StageContext::NodePointer> roots = context.Hierarchy(true);
    const FileMappingList skippedBefore = FilesWithSkippedLinks(*context.fileSet);
    for (const StageContext::NodePointer& root : roots) {
        if (context.IsCanceled())
            return false;
        if (!root->Mapping()->HasFlag(FileMapping::FileLinksNotSupported))
            AssignPluginTargetPaths(context, root);
    }

    const QSet<FileMappingPointer> known(skippedBefore.cbegin(), skippedBefore.cend());
    FileMappingList skippedByPlugins = FilesWithSkippedLinks(*context.fileSet);
    skippedByPlugins.removeIf(
        [&known](const FileMappingPointer& file) { return known.contains(file); });
    // A selected file stays even when nothing links it any more: the user asked for it.
    if (!skippedByPlugins.isEmpty())
        FileSetImp::Of(context.fileSet.get())->DropFileLinks(skippedByPlugins, true);
    return AssignDefaultTargetPaths(context);
}

} // namespace

bool AssignTargetPaths(const StageContext& context)
{
    return RunStage(context, Stage::AssignTargetPaths, Operation::AssignTargetPaths,
                    [&] { return AssignPaths(context); });
}

} // namespace Halvern::FileLink::Stages
