// SPDX-License-Identifier: Apache-2.0

#include "fileset/FileSetImp.h"
#include "importer/FileLinkImporterImp.h"
#include "plugins/PluginLogger.h"
#include "plugins/PluginManager.h"
#include "support/Logging.h"

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

FileMappingList FilesWithSkippedLinks(FileSet& fileSet)
{
    return fileSet.GetFiles(FileMapping::SkipFileLinks, FileMapping::NoFlag, FileMapping::Folder,
                            FileMapping::NoFlag);
}

} // namespace

bool FileLinkImporterImp::AssignTargetPaths()
{
    if (m_fileSet && !HasFilesWhichSupportFileLinks())
        return true;
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Begin assigning target paths for file links"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished assigning target paths"));
    if (!m_fileSet)
        return false;

    const QList<NodePointer> roots = Hierarchy(true);
    const FileMappingList skippedBefore = FilesWithSkippedLinks(*m_fileSet);
    for (const NodePointer& root : roots) {
        if (CheckIfCanceled())
            return false;
        if (!root->Mapping()->HasFlag(FileMapping::FileLinksNotSupported))
            AssignPluginTargetPaths(root);
    }

    const QSet<FileMappingPointer> known(skippedBefore.cbegin(), skippedBefore.cend());
    FileMappingList skippedByPlugins = FilesWithSkippedLinks(*m_fileSet);
    skippedByPlugins.removeIf(
        [&known](const FileMappingPointer& file) { return known.contains(file); });
    // A selected file stays even when nothing links it any more: the user asked for it.
    if (!skippedByPlugins.isEmpty())
        FileSetImp::Of(m_fileSet.get())->DropFileLinks(skippedByPlugins, true);
    return AssignDefaultTargetPaths();
}

bool FileLinkImporterImp::AssignPluginTargetPaths(const NodePointer& node)
{
    PluginManager* const manager = GetPluginManager();
    if (!node || !node->Mapping() || !manager)
        return false;
    FileLayoutContext context(
        CallProblems(m_problems.get(), Stage::AssignTargetPaths, node->SourceFile()));
    return manager->AssignTargetPaths(node, &context);
}

} // namespace Halvern::FileLink
