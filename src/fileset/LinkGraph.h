// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fileset/PathIndex.h"
#include "support/Platform.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QSet>
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
    /// A member's links to members, in link order; empty for mappings that no tree of a selected
    /// file shows with children.
    EdgeList LinksOf(const FileMapping* mapping) const;
    /// The members that link `mapping` and that a selected file reaches, each once. Exact for
    /// source links. Among targets, several of which may be equal, a chain of links may close a
    /// cycle on its way to a member: such a member is named here though no tree shows it with
    /// children.
    QList<const FileMapping*> ParentsOf(const FileMapping* mapping) const;

    /// A number for a reached mapping's path: mappings with one path, letter case aside, share it.
    int PathNumberOf(const FileMapping* mapping) const;
    /// Some chain of links leads from a file with one path to one with the other, and back. Only
    /// such files can stand above each other in a tree and close a cycle.
    bool AreInOneCycle(int pathNumber, int otherPathNumber) const;
    /// Some chain of links that starts here runs into a cycle.
    bool LeadsToCycle(const FileMapping* mapping) const;

private:
    struct Vertex
    {
        EdgeList links;
        int path = -1;
        bool expanded = false;
    };
    struct Members;
    using VisitedSet = QSet<const FileMapping*>;
    void Reach(const FileMappingPointer& root, const Members& members, VisitedSet& visited);
    void ReachRepeated(const FileMappingPointer& root, const Members& members, VisitedSet& closed);
    Vertex& VertexOf(const FileMapping& mapping);
    const EdgeList& Expand(const FileMapping& mapping, const Members& members);
    EdgeList ResolveLinks(const FileMapping& mapping, const Members& members) const;
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
