// SPDX-License-Identifier: Apache-2.0

#include "filelink/FileSet.h"

#include "fileset/FileSetImp.h"

#include <utility>

namespace Halvern::FileLink {

FileSet::FileSet() : m_imp(std::make_unique<FileSetImp>(this)) {}

FileSet::~FileSet() = default;

bool FileSet::AddFile(std::shared_ptr<FileMapping> mapping)
{
    return m_imp->AddFile(std::move(mapping));
}

bool FileSet::RemoveFile(QString sourcePath, bool removeLinkedFiles, bool keepSelectedFiles)
{
    return m_imp->RemoveFile(sourcePath, removeLinkedFiles, keepSelectedFiles);
}

bool FileSet::SkipFileLinksInAllFiles()
{
    return m_imp->SkipFileLinksInAllFiles();
}

int FileSet::IndexOfSourceFile(const QString& path) const
{
    return m_imp->IndexOfSourceFile(path);
}

int FileSet::IndexOfTargetFile(const QString& path) const
{
    return m_imp->IndexOfTargetFile(path);
}

FileSet::FileMappingList FileSet::GetSourceFileLinks(std::shared_ptr<FileMapping> mapping) const
{
    return m_imp->GetSourceFileLinks(mapping);
}

FileSet::FileMappingList FileSet::GetTargetFileLinks(std::shared_ptr<FileMapping> mapping) const
{
    return m_imp->GetSourceFileLinks(mapping);
}

FileSet::FileMappingList FileSet::GetFiles()
{
    return m_imp->GetFiles();
}

FileSet::FileMappingList FileSet::GetFiles(FileMappingFlag withAll, FileMappingFlag withAny,
                                           FileMappingFlag withoutAll, FileMappingFlag withoutAny)
{
    return m_imp->GetFiles(withAll, withAny, withoutAll, withoutAny);
}

bool FileSet::IsEmpty() const
{
    return m_imp->IsEmpty();
}

QString FileSet::GetTargetRootFolder() const
{
    return m_imp->GetTargetRootFolder();
}

bool FileSet::HasFilesWhichSupportFileLinks() const
{
    return m_imp->HasFilesWhichSupportFileLinks();
}

int FileSet::GetCount() const
{
    return m_imp->GetCount();
}

int FileSet::GetFileCount() const
{
    return m_imp->GetFileCount();
}

int FileSet::GetFolderCount() const
{
    return m_imp->GetFolderCount();
}

} // namespace Halvern::FileLink
