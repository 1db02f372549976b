// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/FileSet.h"
#include "fileset/FileMappingRef.h"
#include "fileset/PathIndex.h"
#include "support/Platform.h"

#include <QtCore/QSet>

namespace Halvern::FileLink {

class LinkGraph;

/// The members of a file set, and the trees of links between them.
class FileSetImp
{
public:
    using NodePointer = std::shared_ptr<FileMappingRef>;
    using NodeList = QList<NodePointer>;

    explicit FileSetImp(FileSet* owner);

    /// The implementation behind a set; null for null.
    static FileSetImp* Of(FileSet* fileSet);

    bool AddFile(FileMappingPointer mapping);
    bool RemoveFile(const QString& sourcePath, bool removeLinkedFiles, bool keepSelectedFiles);
    bool SkipFileLinksInAllFiles();

    int IndexOfSourceFile(const QString& path) const;
    int IndexOfTargetFile(const QString& path) const;
    FileMappingPointer GetFileMapping(const QString& sourcePath) const;
    FileMappingList GetSourceFileLinks(const FileMappingPointer& mapping) const;

    FileMappingList GetFiles() const;
    FileMappingList GetFiles(FileMappingFlag withAll, FileMappingFlag withAny,
                             FileMappingFlag withoutAll, FileMappingFlag withoutAny) const;
    FileMappingList GetFilesInFolder(const FileMappingPointer& folder) const;

    bool IsEmpty() const;
    QString GetTargetRootFolder() const;
    /// For a set over another folder than the platform's.
    void SetTargetRootFolder(const QString& folder) { m_targetRootFolder = folder; }
    bool HasFilesWhichSupportFileLinks() const;
    int GetCount() const;
    int GetFileCount() const;
    int GetFolderCount() const;

    /// The trees of links, one per selected file. Cycles are cut where they close and reported.
    /// The trees show the links of the moment of the call, whatever becomes of the set.
    NodeList GetFileLinkHierarchy(bool useSourceLinks) const;
    /// The members that a mapping's source links name, in link order.
    FileMappingList GetLinkedFiles(const FileMappingPointer& mapping) const;
    /// Every node's mapping that has a child over `mapping`, walking all trees depth first,
    /// duplicates included. Walks every path: for trees of many shared files ask LinkGraph.
    static FileMappingList GetParents(const FileMappingPointer& mapping, const NodeList& roots);
    /// Forgets the links of the given files and takes out of the set the linked files that only
    /// they link. With `keepSelectedFiles` selected ones stay.
    bool DropFileLinks(const FileMappingList& files, bool keepSelectedFiles);
    /// Changes every member's links that name `from`.
    void ChangeSourceFileLinks(const QString& from, const QString& to);

private:
    struct CycleSearch;
    class Removal;

    /// Reports the cycles that a root's tree holds.
    static void CreateFileLinkHierarchy(const FileMapping& root, const LinkGraph& graph,
                                        CycleSearch& search);
    void RemoveMembers(const FileMappingList& leaving);
    const PathIndex& Index(PathSide side) const;

    FileSet* m_owner;
    QString m_targetRootFolder;
    FileMappingList m_files;

    struct SideIndex
    {
        PathIndex index;
        quint64 revision = 0;
        bool valid = false;
    };
    QSet<const FileMapping*> m_members;
    mutable SideIndex m_indexes[2];
};

} // namespace Halvern::FileLink
