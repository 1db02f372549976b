// SPDX-License-Identifier: Apache-2.0

#include "fileset/FileSetImp.h"
#include "fileset/LinkGraph.h"
#include "support/Logging.h"

#include <algorithm>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileSetImp.cpp";

using RemovedSet = QSet<const FileMapping*>;

bool AllRemoved(const QList<const FileMapping*>& parents, const RemovedSet& removed)
{
    return std::all_of(parents.cbegin(), parents.cend(),
                       [&](const FileMapping* parent) { return removed.contains(parent); });
}

RemovedSet SetOf(const FileMappingList& files)
{
    RemovedSet set;
    for (const FileMappingPointer& file : files)
        set.insert(file.get());
    return set;
}

/// The graph that a hierarchy was made from. Without selected files there are neither trees nor
/// links between them.
std::shared_ptr<const LinkGraph> GraphOf(const FileSetImp::NodeList& roots)
{
    return roots.isEmpty() ? std::make_shared<const LinkGraph>(FileMappingList(), PathSide::Source)
                           : roots.first()->Graph();
}

} // namespace

bool FileSetImp::RemoveFile(const QString& sourcePath, bool removeLinkedFiles,
                            bool keepSelectedFiles)
{
    const FileMappingPointer mapping = GetFileMapping(sourcePath);
    if (!mapping)
        return false;
    FileMappingList removal = {mapping};
    if (removeLinkedFiles && mapping->IsFolder())
        removal.append(GetFilesInFolder(mapping));
    if (removeLinkedFiles) {
        const std::shared_ptr<const LinkGraph> graph = GraphOf(GetFileLinkHierarchy(true));
        RemovedSet removed = SetOf(removal);
        const FileMappingList snapshot = removal;
        for (const FileMappingPointer& file : snapshot)
            CollectOrphanedLinkedFiles(file, *graph, removal, removed);
    }
    FileMappingList leaving;
    for (const FileMappingPointer& file : std::as_const(removal)) {
        if (keepSelectedFiles && file->HasFlag(FileMapping::Selected))
            continue;
        leaving.append(file);
        FILELINK_LOG(
            LogLevel::Debug,
            QStringLiteral("Removing file from selection set: %1").arg(file->GetSourceFile()));
    }
    RemoveMembers(leaving);
    return true;
}

void FileSetImp::CollectOrphanedLinkedFiles(const FileMappingPointer& mapping,
                                            const LinkGraph& graph, FileMappingList& removal,
                                            RemovedSet& removed)
{
    struct Frame
    {
        LinkGraph::EdgeList links;
        qsizetype next = 0;
    };
    QList<Frame> frames;
    const auto enter = [&](const FileMappingPointer& file) {
        if (!file->IsFolder())
            frames.append(Frame{graph.LinksOf(file.get())});
    };
    enter(mapping);
    while (!frames.isEmpty()) {
        Frame& frame = frames.last();
        if (frame.next == frame.links.size()) {
            frames.removeLast();
            continue;
        }
        const FileMappingPointer linked = frame.links[frame.next++].target;
        if (removed.contains(linked.get()) || !AllRemoved(graph.ParentsOf(linked.get()), removed))
            continue;
        removal.append(linked);
        removed.insert(linked.get());
        enter(linked);
    }
}

void FileSetImp::RemoveMembers(const FileMappingList& leaving)
{
    const RemovedSet set = SetOf(leaving);
    m_files.removeIf([&](const FileMappingPointer& file) { return set.contains(file.get()); });
    for (const FileMappingPointer& file : leaving) {
        m_members.remove(file.get());
        if (file->GetFileSet() == m_owner)
            file->SetFileSet(nullptr);
    }
    m_indexes[int(PathSide::Source)].valid = false;
    m_indexes[int(PathSide::Target)].valid = false;
}

bool FileSetImp::DropFileLinks(const FileMappingList& files, bool keepSelectedFiles)
{
    FileMappingList holders = files;
    holders.removeIf([](const FileMappingPointer& file) { return file->IsFolder(); });
    if (holders.isEmpty())
        return true;
    FileMappingList linked;
    for (const FileMappingPointer& holder : std::as_const(holders))
        linked.append(GetLinkedFiles(holder));
    if (linked.isEmpty())
        return true;

    const std::shared_ptr<const LinkGraph> graph = GraphOf(GetFileLinkHierarchy(true));
    const RemovedSet holderSet = SetOf(holders);
    FileMappingList removal;
    RemovedSet removed;
    for (const FileMappingPointer& file : std::as_const(linked)) {
        if (removed.contains(file.get()) || !AllRemoved(graph->ParentsOf(file.get()), holderSet))
            continue;
        removal.append(file);
        removed.insert(file.get());
    }
    const FileMappingList candidates = removal;
    for (const FileMappingPointer& file : candidates)
        CollectOrphanedLinkedFiles(file, *graph, removal, removed);
    if (keepSelectedFiles)
        removal.removeIf(
            [](const FileMappingPointer& file) { return file->HasFlag(FileMapping::Selected); });
    RemoveMembers(removal);

    for (const FileMappingPointer& file : files) {
        if (!file->IsFolder())
            file->ClearSourceFileLinks();
        file->ClearTargetFileLinks();
    }
    return true;
}

bool FileSetImp::SkipFileLinksInAllFiles()
{
    // A selected file stays even when another selected one links it: the user asked for it. The
    // list is a copy, so that the files that leave lose their links as well.
    DropFileLinks(GetFiles(), true);
    for (const FileMappingPointer& file : std::as_const(m_files))
        file->SetFlag(FileMapping::SkipFileLinks, true);
    return true;
}

} // namespace Halvern::FileLink
