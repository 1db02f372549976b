// SPDX-License-Identifier: Apache-2.0

#include "fileset/FileSetImp.h"
#include "fileset/LinkGraph.h"
#include "support/Logging.h"

#include <algorithm>
#include <vector>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileSetImp.cpp";

using MappingSet = QSet<const FileMapping*>;

bool AreAllIn(const MappingSet& set, const QList<const FileMapping*>& files)
{
    return std::all_of(files.cbegin(), files.cend(),
                       [&](const FileMapping* file) { return set.contains(file); });
}

MappingSet SetOf(const FileMappingList& files)
{
    MappingSet set;
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

/// Files that are to leave the set, in the order in which they were found.
class FileSetImp::Removal
{
public:
    Removal(const LinkGraph& graph, const FileMappingList& files)
        : m_graph(graph), m_files(files), m_set(SetOf(files))
    {}

    const FileMappingList& Files() const { return m_files; }
    /// Adds the files below `holder` that only leaving files link.
    void AddOrphansBelow(const FileMappingPointer& holder);

private:
    bool IsOrphan(const FileMapping* file);
    void Add(const FileMappingPointer& file)
    {
        m_files.append(file);
        m_set.insert(file.get());
    }

    const LinkGraph& m_graph;
    FileMappingList m_files;
    MappingSet m_set;
    /// How many of a file's parents are known to leave, from the first one on: a file that
    /// thousands link is not compared with all of them each time.
    QHash<const FileMapping*, qsizetype> m_leavingParents;
};

bool FileSetImp::Removal::IsOrphan(const FileMapping* file)
{
    const QList<const FileMapping*> parents = m_graph.ParentsOf(file);
    qsizetype& leaving = m_leavingParents[file];
    while (leaving < parents.size() && m_set.contains(parents[leaving]))
        ++leaving;
    return leaving == parents.size();
}

void FileSetImp::Removal::AddOrphansBelow(const FileMappingPointer& holder)
{
    struct Frame
    {
        LinkGraph::EdgeList links;
        qsizetype next = 0;
    };
    std::vector<Frame> frames;
    const auto enter = [&](const FileMappingPointer& file) {
        if (!file->IsFolder())
            frames.push_back({m_graph.LinksOf(file.get())});
    };
    enter(holder);
    while (!frames.empty()) {
        Frame& frame = frames.back();
        if (frame.next == frame.links.size()) {
            frames.pop_back();
            continue;
        }
        const FileMappingPointer linked = frame.links[frame.next++].target;
        if (m_set.contains(linked.get()) || !IsOrphan(linked.get()))
            continue;
        Add(linked);
        enter(linked);
    }
}

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
        Removal found(*graph, removal);
        for (const FileMappingPointer& file : std::as_const(removal))
            found.AddOrphansBelow(file);
        removal = found.Files();
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

void FileSetImp::RemoveMembers(const FileMappingList& leaving)
{
    const MappingSet set = SetOf(leaving);
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
    const MappingSet holderSet = SetOf(holders);
    MappingSet seen;
    FileMappingList candidates;
    for (const FileMappingPointer& file : std::as_const(linked)) {
        if (seen.contains(file.get()))
            continue;
        seen.insert(file.get());
        if (AreAllIn(holderSet, graph->ParentsOf(file.get())))
            candidates.append(file);
    }
    Removal found(*graph, candidates);
    for (const FileMappingPointer& file : std::as_const(candidates))
        found.AddOrphansBelow(file);
    FileMappingList removal = found.Files();
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
