#pragma once

#include "fileset/PathIndex.h"
#include "support/Platform.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::FileLink {

/// The links between the members of a set, as they were when the graph was made. Trees over shared
/// sub-assemblies have exponentially many nodes; the graph has one vertex per member, and the trees
/// grow from it where somebody looks.
class LinkGraph
{
public:
    struct Edge
    {
        QString linkPath;
        QString refId;
        FileMappingPointer target;
    };
    using EdgeList = QList<Edge>;

    /// Follows source links between source paths, or target links between target paths.
    LinkGraph(const FileMappingList& files, PathSide side);

    PathSide Side() const { return m_side; }
    /// A member's links to members, in link order; empty for mappings that no selected file
    /// reaches.
    EdgeList LinksOf(const FileMapping* mapping) const;
    /// The members that link `mapping` and that a selected file reaches, each once.
    QList<const FileMapping*> ParentsOf(const FileMapping* mapping) const;

    /// Two mappings have one path, letter case aside.
    bool HaveSamePath(const FileMapping* a, const FileMapping* b) const;
    /// Some chain of links leads from one to the other and back. Only such files can stand above
    /// each other in a tree and close a cycle.
    bool AreInOneCycle(const FileMapping* a, const FileMapping* b) const;
    /// Some chain of links that starts here runs into a cycle.
    bool LeadsToCycle(const FileMapping* mapping) const;

private:
    struct Vertex
    {
        EdgeList links;
        /// Number of the member's path: members with one path share it.
        int path = -1;
    };
    void AddVertex(const FileMappingPointer& mapping, const FileMappingList& files,
                   const PathIndex& primary, const PathIndex& sources);
    EdgeList ResolveLinks(const FileMapping& mapping, const FileMappingList& files,
                          const PathIndex& primary, const PathIndex& sources) const;
    int PathNumber(const FileMapping& mapping);
    void FindCycles();

    PathSide m_side;
    QHash<const FileMapping*, Vertex> m_vertices;
    QHash<const FileMapping*, QList<const FileMapping*>> m_parents;
    PathIndex m_paths;
    int m_pathCount = 0;
    /// By path number: the strongly connected component, and whether a cycle lies below.
    QList<int> m_component;
    QList<bool> m_leadsToCycle;
};

} // namespace Halvern::FileLink
