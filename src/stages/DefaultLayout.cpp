// SPDX-License-Identifier: Apache-2.0

#include "stages/DefaultLayout.h"
#include "fileset/LinkWalk.h"

#include "support/PathUtilities.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Halvern::FileLink::Stages {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

/// Not below an address, and into each file once: a second visit finds every file below with its
/// target. A node that closes a cycle shows nothing below it, so that it does not count as a visit.
void EnterForDefaultLayout(LinkWalk& walk, const FileMappingRef::Pointer& node,
                           QSet<const FileMapping*>& visited)
{
    const FileMapping* const mapping = node->Mapping().get();
    if (!IsLocalPath(node->SourceFile()) || node->ClosesCycle() || visited.contains(mapping))
        return;
    visited.insert(mapping);
    walk.Enter(node);
}

/// False for a file that keeps its target or gets none.
bool AssignDefaultTargetPath(const FileMappingRef& parent, FileMappingRef& child)
{
    const QString source = child.SourceFile();
    if (child.HasTargetFile() || !IsLocalPath(source) ||
        child.Mapping()->HasFlag(FileMapping::NotFilePath))
        return false;
    const QFileInfo info(source);
    const QString folder = info.absolutePath();
    const bool isNeighbour =
        folder.compare(QFileInfo(parent.SourceFile()).absolutePath(), Qt::CaseInsensitive) == 0;
    // A root folder has no name.
    const QString folderName = isNeighbour ? QString() : QDir(folder).dirName();
    QString path = folderName.isEmpty() ? info.fileName()
                                        : QStringLiteral("%1/%2").arg(folderName, info.fileName());
    // What a file without a target links lands in the cloud cache folder itself.
    const QString parentTarget = parent.TargetFile();
    if (!parentTarget.isEmpty())
        path = QStringLiteral("%1/%2").arg(QFileInfo(parentTarget).absolutePath(), path);
    child.Mapping()->SetTargetFile(child.ResolveTargetPath(QDir::cleanPath(path)), false);
    return true;
}

bool AssignBelow(const StageContext& context, const StageContext::NodePointer& parent,
                 QSet<const FileMapping*>& visited)
{
    if (!parent || !parent->Mapping())
        return false;
    LinkWalk walk;
    EnterForDefaultLayout(walk, parent, visited);
    while (walk.IsOpen()) {
        const StageContext::NodePointer child = walk.NextChild();
        if (!child) {
            walk.Leave();
            continue;
        }
        if (context.IsCanceled())
            return false;
        if (AssignDefaultTargetPath(walk.Node(), *child))
            FILELINK_LOG_FOR(Operation::AssignDefaultTargetPaths, LogLevel::Info,
                             QStringLiteral("Target path not set by plugin for file %1. Setting "
                                            "default target path %2.")
                                 .arg(child->SourceFile())
                                 .arg(child->TargetFile()));
        EnterForDefaultLayout(walk, child, visited);
    }
    return true;
}

} // namespace

bool AssignDefaultTargetPaths(const StageContext& context)
{
    if (!context.fileSet || context.fileSet->IsEmpty())
        return false;
    QSet<const FileMapping*> visited;
    for (const StageContext::NodePointer& root : context.Hierarchy(true))
        if (!AssignBelow(context, root, visited))
            return false;
    return true;
}

} // namespace Halvern::FileLink::Stages
