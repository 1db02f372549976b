// SPDX-License-Identifier: Apache-2.0

#include "stages/DatabaseUpdate.h"

#include "fileset/LinkWalk.h"
#include "fileset/PathIndex.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QSet>

#include <optional>

namespace Halvern::FileLink::Stages {

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

/// One run over the trees of links.
class DatabaseUpdate
{
public:
    using NodePointer = StageContext::NodePointer;

    explicit DatabaseUpdate(const StageContext& context) : m_context(context) {}
    bool Run();

private:
    std::optional<bool> KnownResult(const FileMapping& mapping);
    void ReportNotRecorded(const FileMapping* mapping, const QString& text = {}) const;
    bool Fail(const FileMapping& mapping, const QString& text = {});
    bool UpdateTree(const NodePointer& root);
    bool WriteItem(const FileMapping& mapping);
    bool MergeLinks(const FileMapping& mapping, SyncItem& item) const;
    std::shared_ptr<SyncItem> MakeItem(const FileMapping& mapping);
    void ResolveItemLinks(SyncItem& item) const;

    const StageContext& m_context;
    std::shared_ptr<SyncDatabase> m_database;
    std::shared_ptr<SyncItem> m_rootItem;
    ProcessedItems m_processed;
    /// By the lower-cased path of the file (not of its folder), so that each new file asks for its
    /// folder: an item that another program removed meanwhile is made again.
    QMap<QString, int> m_folderIds;
    /// Files that could not be written, which shared sub-assemblies would try again on each path.
    QSet<const FileMapping*> m_failed;
    /// The host asked to stop: no file of this root that is still open is written. The poll before
    /// the next root ends the stage.
    bool m_canceled = false;
};

bool DatabaseUpdate::Run()
{
    if (m_context.fileSet && !m_context.fileSet->HasFilesWhichSupportFileLinks())
        return true;
    FILELINK_LOG_FOR(Operation::UpdateSyncDatabase, LogLevel::Info,
                     QStringLiteral("Begin updating sync database"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished updating sync database"));
    const QList<NodePointer> roots = m_context.Hierarchy(false);
    if (roots.isEmpty())
        return false;
    m_database = m_context.services->Database();
    m_rootItem = m_context.services->RootItem(m_context.fileSet->GetTargetRootFolder());
    if (!m_database || !m_rootItem) {
        ReportNotRecorded(nullptr);
        return false;
    }

    const bool selectedOnly = m_context.HasOption(Global::ServicesCopyOption);
    const bool updateSelected = m_context.HasOption(Global::UpdateSelectedInDatabase);
    bool result = true;
    for (const NodePointer& root : roots) {
        m_canceled = m_context.IsCanceled();
        if (m_canceled)
            return false;
        const FileMapping& mapping = *root->Mapping();
        if (mapping.HasFlag(FileMapping::FileLinksNotSupported)) {
            LogNotSupported(mapping, Operation::UpdateSyncDatabase);
            continue;
        }
        const bool selected = mapping.HasFlag(FileMapping::Selected);
        if ((IsRecorded(mapping) && (!selectedOnly || selected)) || (updateSelected && selected))
            result = UpdateTree(root) && result;
    }
    return result;
}

/// What became of a file without looking at what it links: true for one that was written, false for
/// one that is not or cannot be; nothing when it is to be written.
std::optional<bool> DatabaseUpdate::KnownResult(const FileMapping& mapping)
{
    const QString target = mapping.GetTargetFile();
    if (!target.isEmpty() && m_processed.Find(target))
        return true;
    if (m_failed.contains(&mapping))
        return false;
    if (m_context.services->IsInCloudCacheFolder(mapping.GetTargetFile()))
        return std::nullopt;
    return Fail(mapping, QStringLiteral("The target lies outside the cloud cache folder"));
}

/// Reports a file once, though it is tried again where links close a cycle: always false.
bool DatabaseUpdate::Fail(const FileMapping& mapping, const QString& text)
{
    if (!m_failed.contains(&mapping)) {
        m_failed.insert(&mapping);
        ReportNotRecorded(&mapping, text);
    }
    return false;
}

/// Without a mapping it is about all files, without a text the database knows why.
void DatabaseUpdate::ReportNotRecorded(const FileMapping* mapping, const QString& text) const
{
    const QString target = mapping ? mapping->GetTargetFile() : QString();
    const bool hasReason = text.isEmpty() && m_database;
    m_context.Report(Stage::UpdateSyncDatabase, ProblemKind::NotRecorded,
                     mapping && target.isEmpty() ? mapping->GetSourceFile() : target,
                     hasReason ? m_database->GetLastError() : text);
}

bool DatabaseUpdate::UpdateTree(const NodePointer& node)
{
    if (const std::optional<bool> known = KnownResult(*node->Mapping()))
        return *known;
    const bool selectedOnly = m_context.HasOption(Global::ServicesCopyOption);
    // That of the file written last, which is the first one: a linked file that could not be
    // written does not keep the others from it.
    bool result = false;
    LinkWalk walk;
    for (walk.Enter(node); walk.IsOpen();) {
        const NodePointer child = walk.NextChild();
        if (!child) {
            // Linked files first, so that their items are there when the links are resolved.
            result = WriteItem(*walk.Node().Mapping());
            if (m_canceled)
                return false;
            walk.Leave();
            continue;
        }
        m_canceled = m_context.IsCanceled();
        if (m_canceled)
            return false;
        const FileMapping& mapping = *child->Mapping();
        if (!IsRecorded(mapping) || (selectedOnly && !mapping.HasFlag(FileMapping::Selected)))
            continue;
        if (mapping.HasFlag(FileMapping::FileLinksNotSupported))
            LogNotSupported(mapping, Operation::UpdateSyncDatabaseNode);
        else if (!KnownResult(mapping))
            walk.Enter(child);
    }
    return result;
}

bool DatabaseUpdate::WriteItem(const FileMapping& mapping)
{
    const QString target = mapping.GetTargetFile();
    if (!PathExists(target))
        return Fail(mapping, QStringLiteral("The target does not exist"));
    std::shared_ptr<SyncItem> item =
        m_database->GetSyncItem(target, true, mapping.GetAuthenticationId(), FileItem::ItemOnly);
    if (item) {
        if (!MergeLinks(mapping, *item)) {
            m_canceled = true;
            return false;
        }
    } else {
        item = MakeItem(mapping);
        if (!item)
            return Fail(mapping);
    }
    m_processed.Append(item);
    ResolveItemLinks(*item);
    SetSyncOptions(mapping, *item);
    if (!m_database->AddOrUpdateFileConfiguration(item))
        Fail(mapping);
    return true;
}

/// A link whose path the item knows already keeps what it was resolved to. False on a cancel.
bool DatabaseUpdate::MergeLinks(const FileMapping& mapping, SyncItem& item) const
{
    QHash<QString, SyncServices::FileLink> known;
    for (const SyncServices::FileLink& link : item.GetFileLinks()) {
        if (m_context.IsCanceled())
            return false;
        if (!known.contains(link.Path))
            known.insert(link.Path, link);
    }
    FileLinkList merged;
    for (const SyncServices::FileLink& link : mapping.GetTargetFileLinks()) {
        if (m_context.IsCanceled())
            return false;
        SyncServices::FileLink kept = known.value(link.Path, link);
        kept.RefId = link.RefId;
        merged.append(kept);
    }
    item.SetFileLinks(merged);
    item.SetFileLinksExtractedAtFileDate(mapping.GetTargetFileLinksExtractedAtFileDate());
    return true;
}

std::shared_ptr<SyncItem> DatabaseUpdate::MakeItem(const FileMapping& mapping)
{
    const QString target = mapping.GetTargetFile();
    const QFileInfo info(target);
    const QString key = QDir::cleanPath(info.absoluteFilePath()).toLower();
    if (!m_folderIds.contains(key)) {
        const std::shared_ptr<SyncItem> folder =
            m_database->AddFolderItem(m_rootItem, info.absolutePath());
        if (!folder)
            return nullptr;
        m_folderIds.insert(key, folder->GetId());
    }
    const QString cloudPath = m_context.services->CloudPath(target);
    const auto item = std::make_shared<SyncItem>(target, cloudPath, m_rootItem->GetCloudRoot());
    item->SetAuthenticationId(m_rootItem->GetAuthenticationId());
    item->SetProductConfigurationId(m_rootItem->GetProductConfigurationId());
    item->SetSourceConsumerId(m_rootItem->GetSourceConsumerId());
    item->SetRootFolderId(m_rootItem->GetId());
    item->SetParentFolderId(m_folderIds.value(key));
    item->SetFileLinks(mapping.GetTargetFileLinks());
    item->SetFileLinksExtractedAtFileDate(mapping.GetTargetFileLinksExtractedAtFileDate());
    return item;
}

void DatabaseUpdate::ResolveItemLinks(SyncItem& item) const
{
    FileLinkList links = item.GetFileLinks();
    for (SyncServices::FileLink& link : links) {
        if (link.ItemId >= 0)
            continue;
        const QString path = ResolveLinkPath(link.Path, item.GetLocalPath());
        std::shared_ptr<SyncItem> linked = m_processed.Find(path);
        if (!linked)
            linked =
                m_database->GetSyncItem(path, true, item.GetAuthenticationId(), FileItem::ItemOnly);
        link.ItemId = linked ? linked->GetId() : -1;
        if (linked)
            link.CloudItemId = linked->GetCloudItemId();
    }
    item.SetFileLinks(links);
}

} // namespace

bool UpdateSyncDatabase(const StageContext& context)
{
    return RunStage(context, Stage::UpdateSyncDatabase, Operation::UpdateSyncDatabase,
                    [&] { return DatabaseUpdate(context).Run(); });
}

} // namespace Halvern::FileLink::Stages
