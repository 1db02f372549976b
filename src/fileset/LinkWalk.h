// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fileset/FileMappingRef.h"

#include <QtCore/QSet>

#include <vector>

namespace Halvern::FileLink {

/// A depth-first walk down a tree of links. The way from the top to the open node stands in a list,
/// not on the stack: links may lead through any number of files.
///
///     for (walk.Enter(root); walk.IsOpen();) {
///         const FileMappingRef::Pointer child = walk.NextChild();
///         if (!child)
///             walk.Leave();           // everything below walk.Node() was seen
///         else if (IsWanted(*child))
///             walk.Enter(child);
///     }
///
/// Nodes below one that was left are gone; who looks there again gets new ones.
class LinkWalk
{
public:
    using NodePointer = FileMappingRef::Pointer;

    /// Opens a root first, then children of the open node.
    void Enter(const NodePointer& node);
    bool IsOpen() const { return !m_open.empty(); }
    /// How many nodes are open.
    int Depth() const { return int(m_open.size()); }
    /// The open node farthest from the top. Requires: IsOpen().
    FileMappingRef& Node() const { return *m_open.back().node; }
    /// Its next child, or null when each was handed out. Requires: IsOpen().
    NodePointer NextChild();
    /// Goes back to the node above. Requires: IsOpen().
    void Leave();

private:
    struct Step
    {
        NodePointer node;
        qsizetype next = 0;
        /// No other open node has its path.
        bool isFirst = false;
    };

    std::vector<Step> m_open;
    QSet<int> m_openPaths;
};

} // namespace Halvern::FileLink
