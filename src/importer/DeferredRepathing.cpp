// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"
#include "support/FileOperations.h"
#include "support/Problems.h"

#include <QtCore/QFile>

namespace Halvern::FileLink {

namespace {
constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";
}

bool FileLinkImporterImp::RepathFiles(int folderId)
{
    if (folderId == -1)
        return false;
    const std::shared_ptr<SyncDatabase> database = Database();
    const std::shared_ptr<SyncItem> folder =
        database ? database->GetFolder(folderId, FileItem::ItemOnly) : nullptr;
    if (!folder)
        return false;
    if (!IsInCloudCacheFolder(folder->GetLocalPath()))
        return true;
    QList<std::shared_ptr<SyncItem>> items =
        database->GetFilesWithSyncOption(folderId, SyncItem::RepathPending);
    items.removeIf([](const std::shared_ptr<SyncItem>& item) {
        return !(item->GetSyncOption() & SyncItem::RepathPending);
    });
    if (!items.isEmpty())
        RepathFiles(items);
    return true;
}

bool FileLinkImporterImp::RepathFiles(const QList<std::shared_ptr<SyncItem>>& items)
{
    if (items.isEmpty())
        return true;
    if (CheckIfCanceled())
        return false;
    const std::shared_ptr<SyncDatabase> database = Database();
    for (const std::shared_ptr<SyncItem>& item : items) {
        if (CheckIfCanceled())
            return false;
        const QString path = item->GetLocalPath();
        if (QFile::exists(path)) {
            if (IsFileLocked(path)) {
                FILELINK_PROBLEM(
                    m_problems.get(), FILELINK_FUNCTION, LogLevel::Debug,
                    QStringLiteral("Repathing skipped for file %1. File is locked. File will be "
                                   "repathed after it is unlocked.")
                        .arg(path),
                    {Stage::RepathFiles, ProblemKind::Locked, path, {}, {}});
                continue;
            }
            RepathFile(path, item->GetFileLinks());
        }
        // Also for a file that is gone: nothing is left to do for it.
        item->SetSyncOption(item->GetSyncOption() & ~SyncItem::RepathPending);
        if (!database || !database->AddOrUpdateFileConfiguration(item))
            Report(Stage::RepathFiles, ProblemKind::NotRecorded, path,
                   database ? database->GetLastError() : QString());
    }
    return true;
}

} // namespace Halvern::FileLink
