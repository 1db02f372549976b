// SPDX-License-Identifier: Apache-2.0

#include "stages/DeferredRepathing.h"

#include "stages/Repathing.h"
#include "support/FileOperations.h"
#include "support/Problems.h"

#include <QtCore/QFile>

namespace Halvern::FileLink::Stages {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

bool RepathItems(const StageContext& context, const QList<std::shared_ptr<SyncItem>>& items)
{
    if (items.isEmpty())
        return true;
    if (context.IsCanceled())
        return false;
    const std::shared_ptr<SyncDatabase> database = context.services->Database();
    for (const std::shared_ptr<SyncItem>& item : items) {
        if (context.IsCanceled())
            return false;
        const QString path = item->GetLocalPath();
        if (QFile::exists(path)) {
            if (IsFileLocked(path)) {
                FILELINK_PROBLEM(
                    context.problems.get(), Operation::RepathItems, LogLevel::Debug,
                    QStringLiteral("Repathing skipped for file %1. File is locked. File will be "
                                   "repathed after it is unlocked.")
                        .arg(path),
                    {Stage::RepathFiles, ProblemKind::Locked, path, {}, {}});
                continue;
            }
            RepathFile(context, path, item->GetFileLinks());
        }
        // Also for a file that is gone: nothing is left to do for it.
        item->SetSyncOption(item->GetSyncOption() & ~SyncItem::RepathPending);
        if (!database || !database->AddOrUpdateFileConfiguration(item))
            context.Report(Stage::RepathFiles, ProblemKind::NotRecorded, path,
                           database ? database->GetLastError() : QString());
    }
    return true;
}

bool RepathItemsOf(const StageContext& context, int folderId)
{
    if (folderId == -1)
        return false;
    const std::shared_ptr<SyncDatabase> database = context.services->Database();
    const std::shared_ptr<SyncItem> folder =
        database ? database->GetFolder(folderId, FileItem::ItemOnly) : nullptr;
    if (!folder)
        return false;
    if (!context.services->IsInCloudCacheFolder(folder->GetLocalPath()))
        return true;
    QList<std::shared_ptr<SyncItem>> items =
        database->GetFilesWithSyncOption(folderId, SyncItem::RepathPending);
    items.removeIf([](const std::shared_ptr<SyncItem>& item) {
        return !(item->GetSyncOption() & SyncItem::RepathPending);
    });
    if (!items.isEmpty())
        RepathItems(context, items);
    return true;
}

} // namespace

bool RepathFolder(const StageContext& context, int folderId)
{
    return RunStage(context, Stage::RepathFiles, Operation::RepathFolder,
                    [&] { return RepathItemsOf(context, folderId); });
}

bool RepathPendingItems(const StageContext& context, const QList<std::shared_ptr<SyncItem>>& items)
{
    return RunStage(context, Stage::RepathFiles, Operation::RepathItems,
                    [&] { return RepathItems(context, items); });
}

} // namespace Halvern::FileLink::Stages
