// SPDX-License-Identifier: Apache-2.0

#include "fileset/FileSetImp.h"
#include "fileset/LinkGraph.h"
#include "support/Logging.h"

#include <algorithm>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileSetImp.cpp";

// Nodes visited in search of circular references. Many cycles among shared files close along more
// paths than anybody can read.
constexpr int MaxNodesSearchedForCycles = 100'000;

QString PathOfNode(const FileMappingRef& node)
{
    return PathOf(*node.Mapping(), node.Graph()->Side());
}

bool Links(FileMappingRef& node, const FileMapping* mapping)
{
    const QList<FileMappingRef::Pointer>& children = node.Children();
    return std::any_of(children.cbegin(), children.cend(),
                       [mapping](const auto& child) { return child->Mapping().get() == mapping; });
}

} // namespace

FileSetImp::NodeList FileSetImp::GetFileLinkHierarchy(bool useSourceLinks) const
{
    const auto graph = std::make_shared<const LinkGraph>(
        m_files, useSourceLinks ? PathSide::Source : PathSide::Target);
    const QString baseFolder = ConvertCloudCacheFolderPath(m_targetRootFolder);
    NodeList roots;
    int remaining = MaxNodesSearchedForCycles;
    for (const FileMappingPointer& file : m_files) {
        if (file->IsFolder() || !file->HasFlag(FileMapping::Selected))
            continue;
        const NodePointer root = std::make_shared<FileMappingRef>(QString(), QString(), file);
        root->SetTargetBaseFolder(baseFolder);
        root->SetGraph(graph);
        roots.append(root);
        CreateFileLinkHierarchy(root, remaining);
    }
    if (remaining <= 0)
        FILELINK_LOG(LogLevel::Info,
                     QStringLiteral("Too many circular references. Further ones are not listed."));
    return roots;
}

void FileSetImp::CreateFileLinkHierarchy(const NodePointer& root, int& remaining)
{
    struct Frame
    {
        FileMappingRef* node;
        qsizetype next = 0;
    };
    QList<Frame> frames;
    QSet<int> open;
    // Where no cycle lies below there is nothing to report, and children are made on demand.
    const auto enter = [&](FileMappingRef* node) {
        if (!node->Graph()->LeadsToCycle(node->Mapping().get()) || --remaining <= 0)
            return;
        frames.append(Frame{node});
        open.insert(node->PathNumber());
    };
    enter(root.get());
    while (!frames.isEmpty()) {
        FileMappingRef& node = *frames.last().node;
        const QList<NodePointer>& children = node.Children(open);
        if (frames.last().next == children.size()) {
            open.remove(node.PathNumber());
            frames.removeLast();
            continue;
        }
        FileMappingRef& child = *children[frames.last().next++];
        if (!child.ClosesCycle())
            enter(&child);
        else
            FILELINK_LOG(LogLevel::Info,
                         QStringLiteral("Circular reference detected. File link %1 in %2 leads to "
                                        "circular reference.")
                             .arg(PathOfNode(child))
                             .arg(PathOfNode(node)));
    }
}

FileMappingList FileSetImp::GetParents(const FileMappingPointer& mapping, const NodeList& roots)
{
    FileMappingList parents;
    QList<FileMappingRef*> pending;
    for (const NodePointer& root : roots) {
        pending.append(root.get());
        while (!pending.isEmpty()) {
            FileMappingRef& node = *pending.takeLast();
            if (Links(node, mapping.get()))
                parents.append(node.Mapping());
            const QList<NodePointer>& children = node.Children();
            for (auto child = children.crbegin(); child != children.crend(); ++child)
                pending.append(child->get());
        }
    }
    return parents;
}

} // namespace Halvern::FileLink
