// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"

namespace Halvern::FileLink {

bool FileLinkImporterImp::ComputeTargetFileLinks()
{
    if (!m_fileSet || m_fileSet->IsEmpty())
        return false;
    const bool selectedOnly = HasOption(Global::ServicesCopyOption);
    const SourceList files(m_fileSet->GetFiles());
    bool result = true;
    for (const FileMappingPointer& mapping : files.files) {
        if (CheckIfCanceled())
            return false;
        if (mapping->IsFolder() || (selectedOnly && !mapping->HasFlag(FileMapping::Selected)))
            continue;
        result = ComputeTargetFileLinks(mapping, files) && result;
    }
    return result;
}

/// Links to files that are not part of the import do not survive in the list.
bool FileLinkImporterImp::ComputeTargetFileLinks(const FileMappingPointer& mapping,
                                                 const SourceList& files)
{
    const QString source = mapping->GetSourceFile();
    if (!IsLocalPath(source))
        return true;
    const QString target = mapping->GetTargetFile();
    if (target.isEmpty() || !PathExists(target))
        return false;
    FileLinkList newLinks;
    for (SyncServices::FileLink link : mapping->GetSourceFileLinks()) {
        if (CheckIfCanceled())
            return false;
        if (!IsLocalPath(link.Path)) {
            newLinks.append(link);
            continue;
        }
        const FileMappingPointer linked = files.Find(MakeAbsolutePath(link.Path, source, true));
        if (!linked || !linked->HasTargetFile())
            continue;
        link.Path = MakeRelativePath(linked->GetTargetFile(), target, true);
        if (!link.Path.isEmpty())
            newLinks.append(link);
    }
    mapping->SetTargetFileLinks(newLinks);
    mapping->SetTargetFileLinksExtractedAtFileDate(LastModified(target));
    return true;
}

} // namespace Halvern::FileLink
