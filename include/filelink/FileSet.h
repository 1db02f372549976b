// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/Export.h"
#include "syncservices/FileMapping.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <memory>

namespace Halvern::FileLink {

class FileSetImp;

/// The files and folders of one import, selected and linked, in the order in which they were found.
/// Paths are compared without regard to letter case. Used from the thread that drives the importer.
///
/// A set shares its members with whoever asks for them, and stands in each as
/// FileMapping::GetFileSet until the member is removed. A set that is destroyed does not tell its
/// members: who keeps one longer must not ask it for its set.
class FILELINK_EXPORT FileSet
{
public:
    using FileMapping = SyncServices::FileMapping;
    using FileMappingFlag = SyncServices::FileMapping::FileMappingFlag;
    using FileMappingList = QList<std::shared_ptr<FileMapping>>;

    /// An empty set over the cloud cache folder of the moment.
    FileSet();
    ~FileSet();
    FileSet(const FileSet&) = delete;
    FileSet& operator=(const FileSet&) = delete;

    /// Appends a mapping unless this very object is a member already. True when it is a member now;
    /// false for a null pointer.
    bool AddFile(std::shared_ptr<FileMapping> mapping);
    /// Takes the first member with this source path out of the set. With `removeLinkedFiles` the
    /// members inside a folder go too, and the linked files that only removed files link. With
    /// `keepSelectedFiles` selected members stay. True when there is such a member, even if it is
    /// selected and stays; false, and nothing changed, when there is none.
    bool RemoveFile(QString sourcePath, bool removeLinkedFiles, bool keepSelectedFiles);
    /// Forgets all links: linked files that were not selected leave the set, and the links of the
    /// others are not followed again. Always true.
    bool SkipFileLinksInAllFiles();

    /// Index of the first member with this source (target) path, or -1. The argument is cleaned,
    /// the members' paths are compared as stored.
    int IndexOfSourceFile(const QString& path) const;
    int IndexOfTargetFile(const QString& path) const;
    /// The members that the mapping's source file links, in link order, once per link.
    FileMappingList GetSourceFileLinks(std::shared_ptr<FileMapping> mapping) const;
    /// The same answer as GetSourceFileLinks.
    FileMappingList GetTargetFileLinks(std::shared_ptr<FileMapping> mapping) const;

    /// All members. Like every list here it is the caller's own, over the set's own mappings.
    FileMappingList GetFiles();
    /// The members with all bits of `withAll`, at least one of `withAny`, not all of `withoutAll`
    /// and none of `withoutAny`; an argument of 0 does not count.
    FileMappingList GetFiles(FileMappingFlag withAll, FileMappingFlag withAny,
                             FileMappingFlag withoutAll, FileMappingFlag withoutAny);

    /// True when there is no member.
    bool IsEmpty() const;
    /// The cloud cache folder as it was when the set was made.
    QString GetTargetRootFolder() const;
    /// True when a member is neither a folder nor flagged FileLinksNotSupported.
    bool HasFilesWhichSupportFileLinks() const;
    /// All members, files and folders.
    int GetCount() const;
    /// Members without (with) the Folder flag.
    int GetFileCount() const;
    int GetFolderCount() const;

private:
    friend class FileSetImp;
    std::unique_ptr<FileSetImp> m_imp;
};

} // namespace Halvern::FileLink
