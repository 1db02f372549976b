// SPDX-License-Identifier: Apache-2.0

#include "EagerTrees.h"

#include "support/PathUtilities.h"

#include <QtCore/QDir>

#include <algorithm>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

bool IsSame(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

void CollectParents(const EagerNode& node, const FileMapping* mapping, FileMappingList& parents)
{
    if (std::any_of(node.children.begin(), node.children.end(),
                    [&](const auto& child) { return child->mapping.get() == mapping; }))
        parents.append(node.mapping);
    for (const auto& child : node.children)
        CollectParents(*child, mapping, parents);
}

void CollectChildren(const EagerNode& node, const FileMapping* mapping, FileMappingList& children)
{
    for (const auto& child : node.children) {
        if (node.mapping.get() == mapping && !children.contains(child->mapping))
            children.append(child->mapping);
        CollectChildren(*child, mapping, children);
    }
}

void CollectOrphans(const FileMappingPointer& mapping, const EagerTrees& trees,
                    FileMappingList& removal)
{
    if (mapping->IsFolder() || !removal.contains(mapping))
        return;
    for (const FileMappingPointer& child : trees.Children(mapping.get())) {
        const FileMappingList parents = trees.Parents(child.get());
        const bool allRemoved = std::all_of(parents.begin(), parents.end(),
                                            [&](const auto& p) { return removal.contains(p); });
        if (!allRemoved || removal.contains(child))
            continue;
        removal.append(child);
        CollectOrphans(child, trees, removal);
    }
}

void SpareSelected(FileMappingList& removal, bool keepSelectedFiles)
{
    if (keepSelectedFiles)
        removal.removeIf([](const auto& file) { return file->HasFlag(FileMapping::Selected); });
}

FileMappingPointer FirstBySource(const FileMappingList& files, const QString& path)
{
    const QString wanted = QDir::cleanPath(path);
    for (const FileMappingPointer& file : files)
        if (IsSame(file->GetSourceFile(), wanted))
            return file;
    return nullptr;
}

} // namespace

EagerTrees::EagerTrees(const FileMappingList& files, bool sourceLinks)
    : m_files(files), m_sourceLinks(sourceLinks)
{
    for (const FileMappingPointer& file : m_files) {
        if (file->IsFolder() || !file->HasFlag(FileMapping::Selected))
            continue;
        m_roots.push_back(std::make_unique<EagerNode>());
        m_roots.back()->mapping = file;
        Expand(*m_roots.back());
    }
}

QString EagerTrees::PathOf(const FileMapping& mapping) const
{
    return m_sourceLinks ? mapping.GetSourceFile() : mapping.GetTargetFile();
}

FileMappingPointer EagerTrees::Find(const QString& path, bool bySource) const
{
    for (const FileMappingPointer& file : m_files)
        if (IsSame(bySource ? file->GetSourceFile() : file->GetTargetFile(), path))
            return file;
    return nullptr;
}

void EagerTrees::Expand(EagerNode& node)
{
    const QString base = PathOf(*node.mapping);
    const FileLinkList links =
        m_sourceLinks ? node.mapping->GetSourceFileLinks() : node.mapping->GetTargetFileLinks();
    for (const SyncServices::FileLink& link : links) {
        const QString cleaned = QDir::cleanPath(link.Path);
        const bool absolute = FileLink::IsAbsolutePath(cleaned);
        const QString path = absolute ? cleaned : FileLink::MakeAbsolutePath(cleaned, base, true);
        FileMappingPointer found = Find(path, m_sourceLinks);
        if (!found && !m_sourceLinks && absolute)
            found = Find(path, true);
        if (!found)
            continue;
        auto child = std::make_unique<EagerNode>();
        child->linkPath = link.Path;
        child->refId = link.RefId;
        child->mapping = found;
        child->parent = &node;
        node.children.push_back(std::move(child));
    }
    for (const auto& child : node.children) {
        const QString path = PathOf(*child->mapping);
        for (const EagerNode* above = child->parent; above && !child->closesCycle;
             above = above->parent)
            child->closesCycle = IsSame(PathOf(*above->mapping), path);
        if (child->closesCycle)
            m_cycleLines.append(u"INFO Circular reference detected. File link %1 in "
                                "%2 leads to circular reference."_s.arg(path, base));
        else
            Expand(*child);
    }
}

FileMappingList EagerTrees::Parents(const FileMapping* mapping) const
{
    FileMappingList parents;
    for (const auto& root : m_roots)
        CollectParents(*root, mapping, parents);
    return parents;
}

FileMappingList EagerTrees::Children(const FileMapping* mapping) const
{
    FileMappingList children;
    for (const auto& root : m_roots)
        CollectChildren(*root, mapping, children);
    return children;
}

FileMappingList EagerRemoval(const FileMappingList& files, const QString& sourcePath,
                             bool removeLinkedFiles, bool keepSelectedFiles)
{
    const FileMappingPointer mapping = FirstBySource(files, sourcePath);
    if (!mapping)
        return {};
    FileMappingList removal{mapping};
    if (removeLinkedFiles) {
        if (mapping->IsFolder())
            for (const FileMappingPointer& file : files)
                if (FileLink::IsPathUnder(mapping->GetSourceFile(), file->GetSourceFile()))
                    removal.append(file);
        const EagerTrees trees(files, true);
        for (const FileMappingPointer& file : FileMappingList(removal))
            CollectOrphans(file, trees, removal);
    }
    SpareSelected(removal, keepSelectedFiles);
    return removal;
}

FileMappingList EagerDrop(const FileMappingList& files, const FileMappingList& given,
                          bool keepSelectedFiles)
{
    FileMappingList holders;
    FileMappingList linked;
    for (const FileMappingPointer& file : given) {
        if (file->IsFolder())
            continue;
        holders.append(file);
        for (const SyncServices::FileLink& link : file->GetSourceFileLinks()) {
            const QString path =
                FileLink::MakeAbsolutePath(QDir::cleanPath(link.Path), file->GetSourceFile(), true);
            if (const FileMappingPointer member = FirstBySource(files, path))
                linked.append(member);
        }
    }
    const EagerTrees trees(files, true);
    FileMappingList removal;
    for (const FileMappingPointer& file : linked) {
        const FileMappingList parents = trees.Parents(file.get());
        if (!removal.contains(file) && std::all_of(parents.begin(), parents.end(),
                                                   [&](auto& p) { return holders.contains(p); }))
            removal.append(file);
    }
    for (const FileMappingPointer& file : FileMappingList(removal))
        CollectOrphans(file, trees, removal);
    SpareSelected(removal, keepSelectedFiles);
    return removal;
}

} // namespace Halvern::Test
