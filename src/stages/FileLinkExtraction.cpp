// SPDX-License-Identifier: Apache-2.0

#include "stages/FileLinkExtraction.h"

#include "fileset/PathIndex.h"
#include "plugins/LinkRecords.h"
#include "plugins/PluginLogger.h"
#include "plugins/PluginManager.h"
#include "stages/FileTimes.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"

#include "syncservices/SyncLibUtil.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <utility>

namespace Halvern::FileLink::Stages {

using SyncPlugin::FileLinkInfo;
using SyncServices::SyncLibUtil;

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

bool IsExtractionWanted(const FileMapping& mapping)
{
    return !mapping.HasFlagAny(FileMapping::SkipFileLinks | FileMapping::NotFilePath) &&
           !mapping.GetSourceFile().isEmpty() && !mapping.IsFolder();
}

} // namespace

/// The mappings to examine, which grow at the end while they are walked.
struct FileLinkExtraction::WorkList
{
    WorkList(const FileMappingList& snapshot, QString root, int id)
        : targetRoot(std::move(root)), authenticationId(id)
    {
        for (const FileMappingPointer& mapping : snapshot)
            Append(mapping);
    }

    void Append(const FileMappingPointer& mapping)
    {
        sources.Add(mapping->GetSourceFile(), int(mappings.size()));
        mappings.append(mapping);
    }

    FileMappingList mappings;
    PathIndex sources;
    QString targetRoot;
    int authenticationId;
};

FileLinkExtraction::FileLinkExtraction(const StageContext& context) : m_context(context) {}

bool FileLinkExtraction::IsCanceled() const
{
    const std::shared_ptr<ICancelController>& controller = m_context.cancelController;
    if (!controller || !controller->IsCancelRequested())
        return false;
    FILELINK_LOG_FOR(Operation::CheckIfExtractionCanceled, LogLevel::Info,
                     QStringLiteral("File link operation canceled"));
    return true;
}

bool FileLinkExtraction::Run(FileSet& fileSet, bool recursive) const
{
    return RunStage(m_context, Stage::ExtractFileLinks, Operation::ExtractFileLinks,
                    [&] { return ExtractAll(fileSet, recursive); });
}

bool FileLinkExtraction::ExtractAll(FileSet& fileSet, bool recursive) const
{
    if (!fileSet.HasFilesWhichSupportFileLinks()) {
        FILELINK_LOG_FOR(
            Operation::ExtractFileLinks, LogLevel::Info,
            QStringLiteral("File link extraction skipped for the entire file set. File "
                           "set doesn't have any file which supports file links."));
        return true;
    }
    FILELINK_LOG_FOR(Operation::ExtractFileLinks, LogLevel::Info,
                     QStringLiteral("Begin extracting file links"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished extracting file links"));
    const FileMappingList snapshot = fileSet.GetFiles();
    if (snapshot.isEmpty()) {
        FILELINK_LOG_FOR(Operation::ExtractFileLinks, LogLevel::Warn,
                         QStringLiteral("No file to extract. File set is empty."));
        return false;
    }

    WorkList work(snapshot, fileSet.GetTargetRootFolder(), m_context.services->AuthenticationId());
    PathIndex processed;
    for (int i = 0; i < work.mappings.size(); ++i) {
        if (IsCanceled())
            return false;
        const FileMappingPointer mapping = work.mappings[i];
        const QString source = mapping->GetSourceFile();
        if (!IsExtractionWanted(*mapping) || processed.Find(source) >= 0)
            continue;
        // New mappings are appended, so the first ones are those present at the start.
        if (!recursive && i >= snapshot.size())
            continue;
        ExtractLinks(mapping);
        if (!AddLinkedFiles(*mapping, work))
            return false;
        processed.Add(source, i);
    }
    for (const FileMappingPointer& mapping : std::as_const(work.mappings)) {
        if (IsCanceled())
            return false;
        fileSet.AddFile(mapping);
    }
    return true;
}

bool FileLinkExtraction::AddLinkedFiles(const FileMapping& mapping, WorkList& work) const
{
    const QString holder = mapping.GetSourceFile();
    for (const SyncServices::FileLink& link : mapping.GetSourceFileLinks()) {
        if (IsCanceled())
            return false;
        const QString path = ResolveLinkPath(link.Path, holder);
        if (work.sources.Find(path) >= 0)
            continue;
        const QString target = IsPathUnder(work.targetRoot, path) ? path : QString();
        const auto linked = std::make_shared<FileMapping>(path, target, work.authenticationId);
        if (!IsLocalPath(path))
            linked->SetFlag(FileMapping::NotFilePath, true);
        work.Append(linked);
    }
    return true;
}

bool FileLinkExtraction::ExtractLinks(const FileMappingPointer& mapping) const
{
    const QString source = mapping->GetSourceFile();
    const QStringList& fileTypes = m_context.fileTypes;
    const bool supported = fileTypes.isEmpty() || SyncLibUtil::IsInFileTypeList(source, fileTypes);
    if (!supported)
        mapping->SetFlag(FileMapping::FileLinksNotSupported, true);

    const bool isInCloudFolder = m_context.services->IsInCloudCacheFolder(source);
    QDateTime restoredDate;
    if (!isInCloudFolder) {
        RestoreFromHistory(*mapping, supported);
        restoredDate = mapping->GetSourceFileLinksExtractedAtFileDate();
    } else if (supported) {
        restoredDate = RestoreFromDatabase(*mapping);
    }
    if (!supported) {
        FILELINK_LOG_FOR(Operation::ExtractLinksOfMapping, LogLevel::Debug,
                         QStringLiteral("File link extraction skipped for file %1. File links not "
                                        "supported for this file type.")
                             .arg(source));
        return true;
    }
    if (IsCanceled())
        return false;
    if (IsSameSecond(LastModified(source), restoredDate)) {
        FILELINK_LOG_FOR(
            Operation::ExtractLinksOfMapping, LogLevel::Info,
            (isInCloudFolder
                 ? QStringLiteral("File link extraction skipped for file %1. File links "
                                  "restored from sync database.")
                 : QStringLiteral("File link extraction skipped for file %1. File links "
                                  "restored from copy history."))
                .arg(source));
        LogLinks(source, mapping->GetSourceFileLinks());
        return true;
    }
    return ExtractAfresh(mapping, isInCloudFolder);
}

QDateTime FileLinkExtraction::RestoreFromDatabase(FileMapping& mapping) const
{
    const std::shared_ptr<SyncDatabase> database = m_context.services->Database();
    const std::shared_ptr<SyncItem> item =
        database ? database->GetSyncItem(mapping.GetSourceFile(), true,
                                         m_context.services->AuthenticationId(), FileItem::ItemOnly)
                 : nullptr;
    if (!item)
        return QDateTime();
    mapping.SetSourceFileLinks(item->GetFileLinks());
    mapping.SetSourceFileLinksExtractedAtFileDate(item->GetFileLinksExtractedAtFileDate());
    return item->GetFileLinksExtractedAtFileDate();
}

void FileLinkExtraction::RestoreFromHistory(FileMapping& mapping, bool supported) const
{
    const FileMappingPointer earlier =
        m_context.history->Find(mapping.GetSourceFile(), m_context.services->AuthenticationId());
    if (!earlier)
        return;
    const FileMappingFlag flags = mapping.GetFlag();
    const bool keepTarget =
        mapping.HasFlag(FileMapping::Selected) || mapping.AreSourceAndTargetSame();
    mapping.CopyFrom(earlier.get(), keepTarget, !supported);
    if (!keepTarget && mapping.HasTargetFile() && !mapping.ExistsInTarget())
        mapping.SetTargetFile(QString(), true);
    mapping.SetFlagAll(flags);
}

bool FileLinkExtraction::ExtractAfresh(const FileMappingPointer& mapping,
                                       bool isInCloudFolder) const
{
    const QString source = mapping->GetSourceFile();
    // Taken before the file is read: a change meanwhile must count as one next time.
    const QDateTime modified = LastModified(source).toUTC();
    FileLinkList links;
    if (!ReadLinks(source, links) || IsCanceled())
        return false;
    mapping->SetSourceFileLinks(links);
    mapping->SetSourceFileLinksExtractedAtFileDate(modified);
    if (!isInCloudFolder)
        m_context.history->AddOrUpdate(mapping);
    return true;
}

bool FileLinkExtraction::ReadLinks(const QString& path, FileLinkList& links) const
{
    if (!RequireFile(path))
        return false;
    FileLinkList stored;
    // A file that its plug-in could not read has no links; the manager has said why.
    static_cast<void>(AskPlugins(path, stored));
    for (SyncServices::FileLink& link : stored) {
        if (IsCanceled())
            return false;
        link.Path = StoredPath(link.Path, path);
        links.append(link);
    }
    LogLinks(path, links);
    return true;
}

bool FileLinkExtraction::ReadStoredLinks(const QString& path, FileLinkList& links) const
{
    if (!RequireFile(path))
        return false;
    FileLinkList stored;
    const bool read = AskPlugins(path, stored);
    LogLinks(path, stored);
    links.append(stored);
    return read;
}

bool FileLinkExtraction::RequireFile(const QString& path) const
{
    if (PathExists(path))
        return true;
    FILELINK_PROBLEM(
        m_context.problems.get(), Operation::ExtractLinksOfFile, LogLevel::Error,
        QStringLiteral("Failed to extract file links from %1. File not found.").arg(path),
        {Stage::ExtractFileLinks, ProblemKind::FileMissing, path, {}, {}});
    return false;
}

bool FileLinkExtraction::AskPlugins(const QString& path, FileLinkList& links) const
{
    FILELINK_LOG_FOR(Operation::ExtractLinksOfFile, LogLevel::Trace,
                     QStringLiteral("Extracting file links from %1").arg(path));
    PluginManager* const manager = m_context.services->Plugins();
    if (!manager)
        return false;
    QList<FileLinkInfo> infos;
    FileLinkResolverContext call(
        CallProblems(m_context.problems.get(), Stage::ExtractFileLinks, path));
    const bool read = manager->GetFileLinks(path, infos, &call);
    for (const FileLinkInfo& info : std::as_const(infos)) {
        SyncServices::FileLink link;
        link.RefId = GetReferenceId(info);
        link.Path = GetLinkPath(info);
        links.append(link);
    }
    return read;
}

QString FileLinkExtraction::StoredPath(const QString& linkPath, const QString& holder) const
{
    const QString resolved = ResolveLinkPath(linkPath, holder);
    if (PathExists(resolved))
        return linkPath;
    const QString name = QFileInfo(resolved).fileName();
    const QFileInfo neighbour(QFileInfo(holder).absolutePath() + u'/' + name);
    return !name.isEmpty() && neighbour.isFile() ? name : linkPath;
}

void FileLinkExtraction::LogLinks(const QString& path, const FileLinkList& links) const
{
    if (links.isEmpty())
        FILELINK_LOG_FOR(Operation::LogFileLinks, LogLevel::Info,
                         QStringLiteral("No file links found in %2").arg(path));
    else
        FILELINK_LOG_FOR(Operation::LogFileLinks, LogLevel::Info,
                         QStringLiteral("%1 file links found in %2").arg(links.size()).arg(path));
    for (const SyncServices::FileLink& link : links) {
        const QString resolved = ResolveLinkPath(link.Path, path);
        if (!IsLocalPath(resolved) || PathExists(resolved))
            FILELINK_LOG_FOR(
                Operation::LogFileLinks, LogLevel::Debug,
                QStringLiteral("File link: Path: %1 RefId: %2").arg(link.Path).arg(link.RefId));
        else
            FILELINK_LOG_FOR(Operation::LogFileLinks, LogLevel::Warn,
                             QStringLiteral("File link: Path: %1 RefId: %2 (File not found: %3)")
                                 .arg(link.Path)
                                 .arg(link.RefId)
                                 .arg(resolved));
    }
}

} // namespace Halvern::FileLink::Stages
