// SPDX-License-Identifier: Apache-2.0

#include "fileset/FileSetImp.h"

#include "support/PathUtilities.h"

#include <QtCore/QDir>

#include <algorithm>

namespace Halvern::FileLink {

FileSetImp::FileSetImp(FileSet* owner) : m_owner(owner), m_targetRootFolder(CloudCacheFolder()) {}

FileSetImp* FileSetImp::Of(FileSet* fileSet)
{
    return fileSet ? fileSet->m_imp.get() : nullptr;
}

bool FileSetImp::AddFile(FileMappingPointer mapping)
{
    if (!mapping)
        return false;
    if (!m_members.contains(mapping.get())) {
        for (const PathSide side : {PathSide::Source, PathSide::Target}) {
            SideIndex& index = m_indexes[int(side)];
            if (index.valid)
                index.index.Add(PathOf(*mapping, side), int(m_files.size()));
        }
        m_members.insert(mapping.get());
        m_files.append(mapping);
    }
    mapping->SetFileSet(m_owner);
    return true;
}

const PathIndex& FileSetImp::Index(PathSide side) const
{
    SideIndex& entry = m_indexes[int(side)];
    const quint64 revision = side == PathSide::Source ? FileMapping::GetSourcePathRevision()
                                                      : FileMapping::GetTargetPathRevision();
    if (!entry.valid || entry.revision != revision) {
        entry.index.Clear();
        for (int i = 0; i < m_files.size(); ++i)
            entry.index.Add(PathOf(*m_files[i], side), i);
        entry.revision = revision;
        entry.valid = true;
    }
    return entry.index;
}

int FileSetImp::IndexOfSourceFile(const QString& path) const
{
    return Index(PathSide::Source).Find(QDir::cleanPath(path));
}

int FileSetImp::IndexOfTargetFile(const QString& path) const
{
    return Index(PathSide::Target).Find(QDir::cleanPath(path));
}

FileMappingPointer FileSetImp::GetFileMapping(const QString& sourcePath) const
{
    const int index = IndexOfSourceFile(sourcePath);
    return index < 0 ? nullptr : m_files[index];
}

FileMappingList FileSetImp::GetSourceFileLinks(const FileMappingPointer& mapping) const
{
    FileMappingList members;
    if (!mapping)
        return members;
    const QString holder = mapping->GetSourceFile();
    for (const SyncServices::FileLink& link : mapping->GetSourceFileLinks())
        if (const FileMappingPointer member = GetFileMapping(ResolveLinkPath(link.Path, holder)))
            members.append(member);
    return members;
}

FileMappingList FileSetImp::GetLinkedFiles(const FileMappingPointer& mapping) const
{
    return GetSourceFileLinks(mapping);
}

FileMappingList FileSetImp::GetFiles() const
{
    return m_files;
}

FileMappingList FileSetImp::GetFiles(FileMappingFlag withAll, FileMappingFlag withAny,
                                     FileMappingFlag withoutAll, FileMappingFlag withoutAny) const
{
    if ((withAll | withAny | withoutAll | withoutAny) == FileMapping::NoFlag)
        return m_files;
    FileMappingList result;
    for (const FileMappingPointer& file : m_files) {
        if (withAll && !file->HasFlag(withAll))
            continue;
        if (withAny && !file->HasFlagAny(withAny))
            continue;
        if (withoutAll && file->HasFlag(withoutAll))
            continue;
        if (withoutAny && file->HasFlagAny(withoutAny))
            continue;
        result.append(file);
    }
    return result;
}

FileMappingList FileSetImp::GetFilesInFolder(const FileMappingPointer& folder) const
{
    FileMappingList result;
    const QString path = folder->GetSourceFile();
    for (const FileMappingPointer& file : m_files)
        if (IsPathUnder(path, file->GetSourceFile()))
            result.append(file);
    return result;
}

bool FileSetImp::IsEmpty() const
{
    return m_files.isEmpty();
}

QString FileSetImp::GetTargetRootFolder() const
{
    return m_targetRootFolder;
}

bool FileSetImp::HasFilesWhichSupportFileLinks() const
{
    return std::any_of(m_files.cbegin(), m_files.cend(), [](const FileMappingPointer& file) {
        return !file->HasFlag(FileMapping::FileLinksNotSupported) && !file->IsFolder();
    });
}

int FileSetImp::GetCount() const
{
    return int(m_files.size());
}

int FileSetImp::GetFileCount() const
{
    return GetCount() - GetFolderCount();
}

int FileSetImp::GetFolderCount() const
{
    return int(std::count_if(m_files.cbegin(), m_files.cend(), [](const FileMappingPointer& file) {
        return file->HasFlag(FileMapping::Folder);
    }));
}

void FileSetImp::ChangeSourceFileLinks(const QString& from, const QString& to)
{
    if (from.isEmpty() || to.isEmpty() || from == to)
        return;
    for (const FileMappingPointer& file : std::as_const(m_files))
        file->ChangeSourceFileLink(from, to);
}

} // namespace Halvern::FileLink
