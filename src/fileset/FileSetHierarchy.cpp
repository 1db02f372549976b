// SPDX-License-Identifier: Apache-2.0

#include "fileset/FileSetImp.h"
#include "fileset/LinkGraph.h"
#include "support/Logging.h"

#include <algorithm>
#include <vector>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileSetImp.cpp";

bool Links(FileMappingRef& node, const FileMapping* mapping)
{
    const QList<FileMappingRef::Pointer>& children = node.Children();
    return std::any_of(children.cbegin(), children.cend(),
                       [mapping](const auto& child) { return child->Mapping().get() == mapping; });
}

} // namespace

/// How much further to look. Many cycles among shared files close along more paths than anybody can
/// read.
struct FileSetImp::CycleSearch
{
    /// Nodes of the trees to visit.
    int nodes = 100'000;
    int lines = 100'000;

    bool HasEnded() const { return lines < 0; }
    bool WasCutShort() const { return nodes <= 0 || lines < 0; }
};

FileSetImp::NodeList FileSetImp::GetFileLinkHierarchy(bool useSourceLinks) const
{
    const auto graph = std::make_shared<const LinkGraph>(
        m_files, useSourceLinks ? PathSide::Source : PathSide::Target);
    const QString baseFolder = ConvertCloudCacheFolderPath(m_targetRootFolder);
    const bool reportsCycles = ModuleLogger().isEnabledFor(LogLevel::Info);
    NodeList roots;
    CycleSearch search;
    for (const FileMappingPointer& file : m_files) {
        if (file->IsFolder() || !file->HasFlag(FileMapping::Selected))
            continue;
        const NodePointer root = std::make_shared<FileMappingRef>(QString(), QString(), file);
        root->SetTargetBaseFolder(baseFolder);
        root->SetGraph(graph);
        roots.append(root);
        if (reportsCycles && !search.HasEnded())
            CreateFileLinkHierarchy(*file, *graph, search);
    }
    if (search.WasCutShort())
        FILELINK_LOG(LogLevel::Info,
                     QStringLiteral("Too many circular references. Further ones are not listed."));
    return roots;
}

void FileSetImp::CreateFileLinkHierarchy(const FileMapping& root, const LinkGraph& graph,
                                         CycleSearch& search)
{
    struct Frame
    {
        const FileMapping* file;
        LinkGraph::EdgeList links;
        qsizetype next = 0;
    };
    // The nodes themselves are made when somebody asks for them: the lines need only the way down.
    std::vector<Frame> frames;
    QSet<int> open;
    const auto enter = [&](const FileMapping* file) {
        if (!graph.LeadsToCycle(file) || --search.nodes <= 0)
            return;
        frames.push_back({file, graph.LinksOf(file)});
        open.insert(graph.PathNumberOf(file));
    };
    enter(&root);
    while (!frames.empty()) {
        Frame& frame = frames.back();
        if (frame.next == frame.links.size()) {
            open.remove(graph.PathNumberOf(frame.file));
            frames.pop_back();
            continue;
        }
        const FileMapping* const linked = frame.links[frame.next++].target.get();
        if (!open.contains(graph.PathNumberOf(linked))) {
            enter(linked);
            continue;
        }
        if (--search.lines < 0)
            return;
        FILELINK_LOG(LogLevel::Info,
                     QStringLiteral("Circular reference detected. File link %1 in %2 leads to "
                                    "circular reference.")
                         .arg(PathOf(*linked, graph.Side()))
                         .arg(PathOf(*frame.file, graph.Side())));
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
