// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"
#include "support/Problems.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QMap>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

bool IsRecorded(const FileMapping& mapping)
{
    return mapping.HasFlagAny(FileMapping::IncludeInDatabase | FileMapping::Copied);
}

void LogNotSupported(const FileMapping& mapping, const char* operation)
{
    FILELINK_LOG_FOR(operation, LogLevel::Debug,
                     QStringLiteral("Sync database update skipped for file %1. File links not "
                                    "supported for this file type.")
                         .arg(mapping.GetTargetFile()));
}

void SetSyncOptions(const FileMapping& mapping, SyncItem& item)
{
    SyncItem::SyncOption set = SyncItem::NoSyncOption;
    SyncItem::SyncOption clear = SyncItem::NoSyncOption;
    (mapping.HasFlag(FileMapping::NeedsRepath) ? set : clear) |= SyncItem::RepathPending;
    (mapping.HasFlag(FileMapping::SkipFileLinks) ? set : clear) |= SyncItem::SkipFileLinks;
    if (set)
        item.SetSyncOption(set, true);
    if (clear)
        item.SetSyncOption(clear, false);
}

} // namespace

/// Items written in this run, found by local path.
class ProcessedItems
{
public:
    void Append(const std::shared_ptr<SyncItem>& item)
    {
        m_index.Add(item->GetLocalPath(), int(m_items.size()));
        m_items.append(item);
    }

    std::shared_ptr<SyncItem> Find(const QString& path) const
    {
        const int found = m_index.Find(path);
        return found < 0 ? nullptr : m_items[found];
    }

private:
    QList<std::shared_ptr<SyncItem>> m_items;
    PathIndex m_index;
};

struct FileLinkImporterImp::DatabaseUpdateState
{
    std::shared_ptr<SyncDatabase> database;
    std::shared_ptr<SyncItem> rootItem;
    ProcessedItems processed;
    /// By the lower-cased path of the file (not of its folder), so that each new file asks for its
    /// folder: an item that another program removed meanwhile is made again.
    QMap<QString, int> folderIds;
    /// Files that could not be written, which shared sub-assemblies would try again on each path.
    QSet<const FileMapping*> failed;
    /// The host asked to stop: no file of this root that is still open is written. The poll before
    /// the next root ends the stage.
    bool canceled = false;
};

bool FileLinkImporterImp::UpdateSyncDatabase()
{
    if (m_fileSet && !m_fileSet->HasFilesWhichSupportFileLinks())
        return true;
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Begin updating sync database"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished updating sync database"));
    const QList<NodePointer> roots = Hierarchy(false);
    if (roots.isEmpty())
        return false;
    DatabaseUpdateState state;
    state.database = Database();
    state.rootItem = RootItem();
    if (!state.database || !state.rootItem) {
        ReportNotRecorded(nullptr, state);
        return false;
    }

    const bool selectedOnly = HasOption(Global::ServicesCopyOption);
    const bool updateSelected = HasOption(Global::UpdateSelectedInDatabase);
    bool result = true;
    for (const NodePointer& root : roots) {
        state.canceled = CheckIfCanceled();
        if (state.canceled)
            return false;
        const FileMapping& mapping = *root->Mapping();
        if (mapping.HasFlag(FileMapping::FileLinksNotSupported)) {
            LogNotSupported(mapping, FILELINK_FUNCTION);
            continue;
        }
        const bool selected = mapping.HasFlag(FileMapping::Selected);
        if ((IsRecorded(mapping) && (!selectedOnly || selected)) || (updateSelected && selected))
            result = UpdateSyncDatabase(root, state) && result;
    }
    return result;
}

bool FileLinkImporterImp::UpdateSyncDatabase(const NodePointer& node, DatabaseUpdateState& state)
{
    const QString target = node->TargetFile();
    if (!target.isEmpty() && state.processed.Find(target))
        return true;
    const FileMappingPointer mapping = node->Mapping();
    if (state.failed.contains(mapping.get()))
        return false;
    if (!mapping->IsTargetFileInCloudCacheFolder()) {
        state.failed.insert(mapping.get());
        ReportNotRecorded(mapping.get(), state,
                          QStringLiteral("The target lies outside the cloud cache folder"));
        return false;
    }
    // Linked files first, so that their items are there when the links are resolved.
    if (!UpdateChildren(node, state, FILELINK_FUNCTION))
        return false;
    if (!PathExists(target)) {
        state.failed.insert(mapping.get());
        ReportNotRecorded(mapping.get(), state, QStringLiteral("The target does not exist"));
        return false;
    }
    std::shared_ptr<SyncItem> item = state.database->GetSyncItem(
        target, true, mapping->GetAuthenticationId(), FileItem::ItemOnly);
    if (item) {
        if (!MergeLinks(*mapping, *item)) {
            state.canceled = true;
            return false;
        }
    } else {
        item = MakeItem(*mapping, state);
        if (!item) {
            state.failed.insert(mapping.get());
            ReportNotRecorded(mapping.get(), state);
            return false;
        }
    }
    state.processed.Append(item);
    ResolveItemLinks(*item, state);
    SetSyncOptions(*mapping, *item);
    if (!state.database->AddOrUpdateFileConfiguration(item))
        ReportNotRecorded(mapping.get(), state);
    return true;
}

/// Without a mapping it is about all files, without a text the database knows why.
void FileLinkImporterImp::ReportNotRecorded(const FileMapping* mapping,
                                            const DatabaseUpdateState& state,
                                            const QString& text) const
{
    const QString target = mapping ? mapping->GetTargetFile() : QString();
    const bool hasReason = text.isEmpty() && state.database;
    Report(Stage::UpdateSyncDatabase, ProblemKind::NotRecorded,
           mapping && target.isEmpty() ? mapping->GetSourceFile() : target,
           hasReason ? state.database->GetLastError() : text);
}

bool FileLinkImporterImp::UpdateChildren(const NodePointer& node, DatabaseUpdateState& state,
                                         const char* operation)
{
    const bool selectedOnly = HasOption(Global::ServicesCopyOption);
    for (const NodePointer& child : node->Children()) {
        state.canceled = CheckIfCanceled();
        if (state.canceled)
            return false;
        const FileMapping& mapping = *child->Mapping();
        if (!IsRecorded(mapping) || (selectedOnly && !mapping.HasFlag(FileMapping::Selected)))
            continue;
        if (mapping.HasFlag(FileMapping::FileLinksNotSupported)) {
            LogNotSupported(mapping, operation);
            continue;
        }
        // A linked file that could not be written does not keep the others from it.
        UpdateSyncDatabase(child, state);
        if (state.canceled)
            return false;
    }
    return true;
}

/// A link whose path the item knows already keeps what it was resolved to. False on a cancel.
bool FileLinkImporterImp::MergeLinks(const FileMapping& mapping, SyncItem& item) const
{
    QHash<QString, SyncServices::FileLink> known;
    for (const SyncServices::FileLink& link : item.GetFileLinks()) {
        if (CheckIfCanceled())
            return false;
        if (!known.contains(link.Path))
            known.insert(link.Path, link);
    }
    FileLinkList merged;
    for (const SyncServices::FileLink& link : mapping.GetTargetFileLinks()) {
        if (CheckIfCanceled())
            return false;
        SyncServices::FileLink kept = known.value(link.Path, link);
        kept.RefId = link.RefId;
        merged.append(kept);
    }
    item.SetFileLinks(merged);
    item.SetFileLinksExtractedAtFileDate(mapping.GetTargetFileLinksExtractedAtFileDate());
    return true;
}

std::shared_ptr<SyncItem> FileLinkImporterImp::MakeItem(const FileMapping& mapping,
                                                        DatabaseUpdateState& state) const
{
    const QString target = mapping.GetTargetFile();
    const QFileInfo info(target);
    const QString key = QDir::cleanPath(info.absoluteFilePath()).toLower();
    if (!state.folderIds.contains(key)) {
        const std::shared_ptr<SyncItem> folder =
            state.database->AddFolderItem(state.rootItem, info.absolutePath());
        if (!folder)
            return nullptr;
        state.folderIds.insert(key, folder->GetId());
    }
    QString cloudPath;
    // Always has one: only targets in the cloud cache folder come here.
    static_cast<void>(FolderManager::GetInstance()->GetCloudPath(target, false, cloudPath));
    const auto item = std::make_shared<SyncItem>(target, cloudPath, state.rootItem->GetCloudRoot());
    item->SetAuthenticationId(state.rootItem->GetAuthenticationId());
    item->SetProductConfigurationId(state.rootItem->GetProductConfigurationId());
    item->SetSourceConsumerId(state.rootItem->GetSourceConsumerId());
    item->SetRootFolderId(state.rootItem->GetId());
    item->SetParentFolderId(state.folderIds.value(key));
    item->SetFileLinks(mapping.GetTargetFileLinks());
    item->SetFileLinksExtractedAtFileDate(mapping.GetTargetFileLinksExtractedAtFileDate());
    return item;
}

void FileLinkImporterImp::ResolveItemLinks(SyncItem& item, DatabaseUpdateState& state) const
{
    FileLinkList links = item.GetFileLinks();
    for (SyncServices::FileLink& link : links) {
        if (link.ItemId >= 0)
            continue;
        const QString path = ResolveLinkPath(link.Path, item.GetLocalPath());
        std::shared_ptr<SyncItem> linked = state.processed.Find(path);
        if (!linked)
            linked = state.database->GetSyncItem(path, true, item.GetAuthenticationId(),
                                                 FileItem::ItemOnly);
        link.ItemId = linked ? linked->GetId() : -1;
        if (linked)
            link.CloudItemId = linked->GetCloudItemId();
    }
    item.SetFileLinks(links);
}

} // namespace Halvern::FileLink
