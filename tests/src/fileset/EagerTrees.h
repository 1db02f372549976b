// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Mappings.h"

#include <memory>
#include <vector>

namespace Halvern::Test {

/// A node of a tree of links that is built at once, with a node for every path of links.
struct EagerNode
{
    QString linkPath;
    QString refId;
    FileMappingPointer mapping;
    EagerNode* parent = nullptr;
    bool closesCycle = false;
    std::vector<std::unique_ptr<EagerNode>> children;
};

/// What the trees of links are, in the plainest possible words: every lookup is a walk over the
/// list, every path of links has its nodes, every question about parents walks all trees. The
/// module's answers must be these, for graphs that are small enough to ask both.
class EagerTrees
{
public:
    EagerTrees(const FileMappingList& files, bool sourceLinks);

    const std::vector<std::unique_ptr<EagerNode>>& Roots() const { return m_roots; }
    /// The lines about cycles, in the order in which building meets them.
    const QStringList& CycleLines() const { return m_cycleLines; }
    /// The mappings with a child over `mapping`, depth first, duplicates included.
    FileMappingList Parents(const FileMapping* mapping) const;
    /// The mappings that a mapping's nodes have as children, each once, in link order.
    FileMappingList Children(const FileMapping* mapping) const;

private:
    void Expand(EagerNode& node);
    FileMappingPointer Find(const QString& path, bool bySource) const;
    QString PathOf(const FileMapping& mapping) const;

    const FileMappingList m_files;
    const bool m_sourceLinks;
    std::vector<std::unique_ptr<EagerNode>> m_roots;
    QStringList m_cycleLines;
};

/// The members that RemoveFile takes out of a set, in order.
FileMappingList EagerRemoval(const FileMappingList& files, const QString& sourcePath,
                             bool removeLinkedFiles, bool keepSelectedFiles);
/// The members that DropFileLinks takes out of a set, in order.
FileMappingList EagerDrop(const FileMappingList& files, const FileMappingList& given,
                          bool keepSelectedFiles);

} // namespace Halvern::Test
