// SPDX-License-Identifier: Apache-2.0

#include "UpToDate.h"

#include "Paths.h"

#include "syncservices/SyncPrivate.h"

#include <QtCore/QHash>

#include <algorithm>

namespace Halvern::Jobs {

using FileLink::FileSet;
using SyncServices::FileItem;
using SyncServices::FileMapping;
using SyncServices::SyncDatabase;
using SyncServices::SyncItem;
using SyncServices::SyncPrivate;

namespace {

/// Earlier copies by the key of the source path; of several the latest.
using History = QHash<QString, std::shared_ptr<FileMapping>>;

History ReadHistory(SyncDatabase& database)
{
    History history;
    const int user = SyncPrivate::GetCurrentUserAuthenticationConfigurationId();
    for (const auto& copy : database.GetFileCopyHistoryByAuthenticationId(user))
        history.insert(PathKey(copy->GetSourceFile()), copy);
    return history;
}

bool IsSameSecond(const QDateTime& a, const QDateTime& b)
{
    return a.isValid() && b.isValid() && a.toSecsSinceEpoch() == b.toSecsSinceEpoch();
}

bool IsSelectedCollision(const FileMapping& file)
{
    return file.HasFlag(FileMapping::Selected) && file.HasFlag(FileMapping::Collision) &&
           !file.HasFlag(FileMapping::Folder);
}

/// As the copy history records it.
QDateTime LastModified(const QString& path)
{
    FileMapping mapping(path, QString(), 0);
    mapping.UpdateSourceFileProperties();
    return mapping.GetSourceFileLastModified();
}

bool IsUnchangedSince(const FileMapping* copy, const FileMapping& file)
{
    return copy && PathKey(copy->GetTargetFile()) == PathKey(file.GetTargetFile()) &&
           IsSameSecond(copy->GetSourceFileLastModified(), LastModified(file.GetSourceFile())) &&
           IsSameSecond(copy->GetTargetFileLastModified(), LastModified(file.GetTargetFile()));
}

void MarkUnchangedSelected(const FileSet::FileMappingList& files, SyncDatabase& database)
{
    const bool any = std::any_of(files.begin(), files.end(),
                                 [](const auto& file) { return IsSelectedCollision(*file); });
    if (!any)
        return;
    const History history = ReadHistory(database);
    for (const auto& file : files) {
        if (!IsSelectedCollision(*file) ||
            !IsUnchangedSince(history.value(PathKey(file->GetSourceFile())).get(), *file))
            continue;
        file->SetFlag(FileMapping::Collision, false);
        file->SetFlag(FileMapping::Unchanged, true);
    }
}

/// The module sends a linked file back to the place of its earlier copy, and calls that a collision
/// also when the copy is gone: with the policy to keep, nothing would be there in the end.
void ClearCollisionsWithNothing(const FileSet::FileMappingList& files)
{
    for (const auto& file : files)
        if (file->HasFlag(FileMapping::Collision) && !file->ExistsInTarget())
            file->SetFlag(FileMapping::Collision, false);
}

/// A finished import leaves an item that knows the links of the copy as it is now.
bool IsFinished(const FileMapping& file, SyncDatabase& database)
{
    if (file.HasFlag(FileMapping::FileLinksNotSupported) || !file.IsTargetFileInCloudCacheFolder())
        return true;
    const auto item = database.GetSyncItem(file.GetTargetFile(), true, file.GetAuthenticationId(),
                                           FileItem::ItemOnly);
    return item && (item->GetSyncOption() & SyncItem::RepathPending) == SyncItem::NoSyncOption &&
           IsSameSecond(item->GetFileLinksExtractedAtFileDate(),
                        LastModified(file.GetTargetFile()));
}

} // namespace

void MarkUpToDate(FileSet& fileSet, SyncDatabase& database)
{
    const FileSet::FileMappingList files = fileSet.GetFiles();
    ClearCollisionsWithNothing(files);
    MarkUnchangedSelected(files, database);
    for (const auto& file : files)
        if (file->HasFlag(FileMapping::Unchanged) && !IsFinished(*file, database))
            file->SetFlag(FileMapping::Copied, true);
}

} // namespace Halvern::Jobs
