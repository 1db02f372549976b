// SPDX-License-Identifier: Apache-2.0

#include "fileset/LinkGraph.h"

#include "support/PathUtilities.h"

#include <QtCore/QDir>

#include <algorithm>

namespace Halvern::FileLink {

namespace {

PathIndex IndexBy(const FileMappingList& files, PathSide side)
{
    PathIndex index;
    for (int i = 0; i < files.size(); ++i)
        index.Add(PathOf(*files[i], side), i);
    return index;
}

/// Tarjan's algorithm without recursion, so that long chains of links cannot exhaust the stack.
/// Components are numbered in reverse topological order: what a component links has lower numbers.
class ComponentFinder
{
public:
    explicit ComponentFinder(const QList<QList<int>>& links)
        : m_links(links), m_order(links.size(), -1), m_low(links.size(), 0),
          m_component(links.size(), -1)
    {
        for (int v = 0; v < m_links.size(); ++v)
            if (m_order[v] < 0)
                Search(v);
    }

    const QList<int>& Components() const { return m_component; }
    int Count() const { return m_count; }

private:
    struct Frame
    {
        int vertex;
        qsizetype next = 0;
    };

    void Search(int start)
    {
        Enter(start);
        while (!m_frames.isEmpty()) {
            const int v = m_frames.last().vertex;
            if (m_frames.last().next < m_links[v].size()) {
                const int w = m_links[v][m_frames.last().next++];
                if (m_order[w] < 0)
                    Enter(w);
                else if (m_component[w] < 0)
                    m_low[v] = std::min(m_low[v], m_order[w]);
                continue;
            }
            Leave(v);
        }
    }

    void Enter(int v)
    {
        m_order[v] = m_low[v] = m_visited++;
        m_open.append(v);
        m_frames.append(Frame{v});
    }

    void Leave(int v)
    {
        m_frames.removeLast();
        if (!m_frames.isEmpty()) {
            const int parent = m_frames.last().vertex;
            m_low[parent] = std::min(m_low[parent], m_low[v]);
        }
        if (m_low[v] != m_order[v])
            return;
        int w = -1;
        do {
            w = m_open.takeLast();
            m_component[w] = m_count;
        } while (w != v);
        ++m_count;
    }

    const QList<QList<int>>& m_links;
    QList<int> m_order;
    QList<int> m_low;
    QList<int> m_component;
    QList<int> m_open;
    QList<Frame> m_frames;
    int m_visited = 0;
    int m_count = 0;
};

} // namespace

struct LinkGraph::Members
{
    Members(const FileMappingList& list, PathSide side)
        : files(list), sources(IndexBy(list, PathSide::Source)),
          targets(side == PathSide::Target ? IndexBy(list, side) : PathIndex()),
          primary(side == PathSide::Source ? sources : targets)
    {}

    const FileMappingList& files;
    const PathIndex sources;
    const PathIndex targets;
    const PathIndex& primary;
};

LinkGraph::LinkGraph(const FileMappingList& files, PathSide side) : m_side(side)
{
    const Members members(files, side);
    VisitedSet closed;
    FileMappingList repeated;
    for (const FileMappingPointer& file : files) {
        if (file->IsFolder() || !file->HasFlag(FileMapping::Selected))
            continue;
        if (side == PathSide::Source && files[members.sources.Find(file->GetSourceFile())] != file)
            repeated.append(file);
        else
            Reach(file, members, closed);
    }
    for (const FileMappingPointer& file : std::as_const(repeated))
        ReachRepeated(file, members, closed);
    FindCycles();
}

/// Depth first; stops at what was visited.
void LinkGraph::Reach(const FileMappingPointer& root, const Members& members, VisitedSet& visited)
{
    FileMappingList pending{root};
    while (!pending.isEmpty()) {
        const FileMappingPointer mapping = pending.takeLast();
        if (visited.contains(mapping.get()))
            continue;
        visited.insert(mapping.get());
        const EdgeList& links = Expand(*mapping, members);
        for (auto link = links.crbegin(); link != links.crend(); ++link)
            pending.append(link->target);
    }
}

/// Links never lead to a root whose path an earlier member has, but to that member. In the root's
/// tree it closes a cycle and has nothing below it; what it links is reached only if another
/// root leads there.
void LinkGraph::ReachRepeated(const FileMappingPointer& root, const Members& members,
                              VisitedSet& closed)
{
    const FileMapping& first = *members.files[members.sources.Find(root->GetSourceFile())];
    if (closed.contains(&first)) {
        Reach(root, members, closed);
        return;
    }
    VertexOf(first);
    VisitedSet visited = closed;
    visited.insert(&first);
    Reach(root, members, visited);
}

LinkGraph::Vertex& LinkGraph::VertexOf(const FileMapping& mapping)
{
    Vertex& vertex = m_vertices[&mapping];
    if (vertex.path < 0)
        vertex.path = PathNumber(mapping);
    return vertex;
}

const LinkGraph::EdgeList& LinkGraph::Expand(const FileMapping& mapping, const Members& members)
{
    Vertex& vertex = VertexOf(mapping);
    if (vertex.expanded)
        return vertex.links;
    vertex.expanded = true;
    vertex.links = ResolveLinks(mapping, members);
    for (const Edge& link : std::as_const(vertex.links)) {
        QList<const FileMapping*>& parents = m_parents[link.target.get()];
        if (parents.isEmpty() || parents.last() != &mapping)
            parents.append(&mapping);
    }
    return vertex.links;
}

LinkGraph::EdgeList LinkGraph::ResolveLinks(const FileMapping& mapping,
                                            const Members& members) const
{
    const QString base = PathOf(mapping, m_side);
    const FileLinkList links =
        m_side == PathSide::Source ? mapping.GetSourceFileLinks() : mapping.GetTargetFileLinks();
    EdgeList edges;
    for (const SyncServices::FileLink& link : links) {
        const bool wasAbsolute = IsAbsolutePath(QDir::cleanPath(link.Path));
        const QString path = ResolveLinkPath(link.Path, base);
        int found = members.primary.Find(path);
        // A copy whose link still names the source file.
        if (found < 0 && m_side == PathSide::Target && wasAbsolute)
            found = members.sources.Find(path);
        if (found >= 0)
            edges.append({link.Path, link.RefId, members.files[found]});
    }
    return edges;
}

int LinkGraph::PathNumber(const FileMapping& mapping)
{
    const QString path = PathOf(mapping, m_side);
    int number = m_paths.Find(path);
    if (number < 0) {
        number = m_pathCount++;
        m_paths.Add(path, number);
    }
    return number;
}

void LinkGraph::FindCycles()
{
    QList<QList<int>> links(m_pathCount);
    for (const Vertex& vertex : std::as_const(m_vertices))
        for (const Edge& edge : vertex.links)
            links[vertex.path].append(PathNumberOf(edge.target.get()));

    const ComponentFinder finder(links);
    m_component = finder.Components();

    QList<bool> cyclic(finder.Count(), false);
    QList<int> size(finder.Count(), 0);
    for (const int component : std::as_const(m_component))
        cyclic[component] = ++size[component] > 1;
    for (int v = 0; v < m_pathCount; ++v)
        if (links[v].contains(v))
            cyclic[m_component[v]] = true;

    // Reverse topological order: the components that one links are settled before it.
    QList<int> byComponent(m_pathCount);
    for (int v = 0; v < m_pathCount; ++v)
        byComponent[v] = v;
    std::sort(byComponent.begin(), byComponent.end(),
              [this](int a, int b) { return m_component[a] < m_component[b]; });
    for (const int v : std::as_const(byComponent))
        for (const int w : std::as_const(links[v]))
            if (cyclic[m_component[w]])
                cyclic[m_component[v]] = true;

    m_leadsToCycle.resize(m_pathCount);
    for (int v = 0; v < m_pathCount; ++v)
        m_leadsToCycle[v] = cyclic[m_component[v]];
}

LinkGraph::EdgeList LinkGraph::LinksOf(const FileMapping* mapping) const
{
    const auto found = m_vertices.constFind(mapping);
    return found == m_vertices.constEnd() ? EdgeList() : found->links;
}

QList<const FileMapping*> LinkGraph::ParentsOf(const FileMapping* mapping) const
{
    return m_parents.value(mapping);
}

int LinkGraph::PathNumberOf(const FileMapping* mapping) const
{
    const auto found = m_vertices.constFind(mapping);
    return found == m_vertices.constEnd() ? -1 : found->path;
}

bool LinkGraph::AreInOneCycle(int pathNumber, int otherPathNumber) const
{
    return m_component[pathNumber] == m_component[otherPathNumber];
}

bool LinkGraph::LeadsToCycle(const FileMapping* mapping) const
{
    return m_leadsToCycle[PathNumberOf(mapping)];
}

} // namespace Halvern::FileLink
