// SPDX-License-Identifier: Apache-2.0

#include "stages/TargetLinks.h"

#include "fileset/PathIndex.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"

#include <QtCore/QDir>

#include <utility>

namespace Halvern::FileLink::Stages {

namespace {

/// Mappings with an index of their source paths.
struct SourceList
{
    explicit SourceList(FileMappingList list) : files(std::move(list))
    {
        for (int i = 0; i < files.size(); ++i)
            index.Add(files[i]->GetSourceFile(), i);
    }
    FileMappingPointer Find(const QString& path) const
    {
        const int found = index.Find(QDir::cleanPath(path));
        return found < 0 ? nullptr : files[found];
    }

    FileMappingList files;
    PathIndex index;
};

/// Links to files that are not part of the import do not survive in the list.
bool ComputeLinksOf(const StageContext& context, const FileMappingPointer& mapping,
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
        if (context.IsCanceled())
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

} // namespace

bool ComputeTargetFileLinks(const StageContext& context)
{
    if (!context.fileSet || context.fileSet->IsEmpty())
        return false;
    const bool selectedOnly = context.HasOption(Global::ServicesCopyOption);
    const SourceList files(context.fileSet->GetFiles());
    bool result = true;
    for (const FileMappingPointer& mapping : files.files) {
        if (context.IsCanceled())
            return false;
        if (mapping->IsFolder() || (selectedOnly && !mapping->HasFlag(FileMapping::Selected)))
            continue;
        result = ComputeLinksOf(context, mapping, files) && result;
    }
    return result;
}

} // namespace Halvern::FileLink::Stages
