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

void AppendParents(FileMappingRef& node, const FileMapping* mapping, FileMappingList& parents)
{
    const QList<FileMappingRef::Pointer>& children = node.Children();
    if (std::any_of(children.cbegin(), children.cend(),
                    [mapping](const auto& child) { return child->Mapping().get() == mapping; }))
        parents.append(node.Mapping());
    for (const FileMappingRef::Pointer& child : children)
        AppendParents(*child, mapping, parents);
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

bool FileSetImp::CreateFileLinkHierarchy(const NodePointer& node, int& remaining) const
{
    if (!node->Mapping())
        return false;
    // Where no cycle lies below there is nothing to report, and children are made on demand.
    if (!node->Graph()->LeadsToCycle(node->Mapping().get()) || --remaining <= 0)
        return true;
    for (const NodePointer& child : node->Children()) {
        if (child->ClosesCycle())
            FILELINK_LOG(LogLevel::Info,
                         QStringLiteral("Circular reference detected. File link %1 in %2 leads to "
                                        "circular reference.")
                             .arg(PathOfNode(*child))
                             .arg(PathOfNode(*node)));
        else
            CreateFileLinkHierarchy(child, remaining);
    }
    return true;
}

FileMappingList FileSetImp::GetParents(const FileMappingPointer& mapping, const NodeList& roots)
{
    FileMappingList parents;
    for (const NodePointer& root : roots)
        AppendParents(*root, mapping.get(), parents);
    return parents;
}

} // namespace Halvern::FileLink
