// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkExtractorImp.h"

#include "fileset/PathIndex.h"
#include "importer/FileTimes.h"
#include "plugins/LinkRecords.h"
#include "plugins/PluginLogger.h"
#include "plugins/PluginManager.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"
#include "support/Problems.h"

#include "syncservices/SyncLibUtil.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <utility>

namespace Halvern::FileLink {

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
struct FileLinkExtractorImp::WorkList
{
    WorkList(const FileMappingList& snapshot, QString root)
        : targetRoot(std::move(root)), authenticationId(GetAuthenticationId())
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

FileLinkExtractorImp::FileLinkExtractorImp(std::shared_ptr<ICancelController> controller,
                                           FileCopyHistory* history)
    : m_cancelController(std::move(controller)), m_history(history)
{}

void FileLinkExtractorImp::SetProblemSink(std::shared_ptr<IProblemSink> sink)
{
    m_problems = std::move(sink);
}

void FileLinkExtractorImp::SetSyncDatabase(std::shared_ptr<SyncDatabase> database)
{
    m_database = std::move(database);
}

bool FileLinkExtractorImp::CheckIfCanceled() const
{
    if (!m_cancelController || !m_cancelController->IsCancelRequested())
        return false;
    FILELINK_LOG(LogLevel::Info, QStringLiteral("File link operation canceled"));
    return true;
}

bool FileLinkExtractorImp::ExtractFileLinks(FileSet* fileSet, bool recursive,
                                            const QStringList& fileTypes)
{
    if (!fileSet->HasFilesWhichSupportFileLinks()) {
        FILELINK_LOG(LogLevel::Info,
                     QStringLiteral("File link extraction skipped for the entire file set. File "
                                    "set doesn't have any file which supports file links."));
        return true;
    }
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Begin extracting file links"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished extracting file links"));
    const FileMappingList snapshot = fileSet->GetFiles();
    if (snapshot.isEmpty()) {
        FILELINK_LOG(LogLevel::Warn, QStringLiteral("No file to extract. File set is empty."));
        return false;
    }

    WorkList work(snapshot, fileSet->GetTargetRootFolder());
    PathIndex processed;
    for (int i = 0; i < work.mappings.size(); ++i) {
        if (CheckIfCanceled())
            return false;
        const FileMappingPointer mapping = work.mappings[i];
        const QString source = mapping->GetSourceFile();
        if (!IsExtractionWanted(*mapping) || processed.Find(source) >= 0)
            continue;
        // New mappings are appended, so the first ones are those present at the start.
        if (!recursive && i >= snapshot.size())
            continue;
        ExtractFileLinks(mapping, fileTypes);
        if (!AddLinkedFiles(*mapping, work))
            return false;
        processed.Add(source, i);
    }
    for (const FileMappingPointer& mapping : std::as_const(work.mappings)) {
        if (CheckIfCanceled())
            return false;
        fileSet->AddFile(mapping);
    }
    return true;
}

bool FileLinkExtractorImp::AddLinkedFiles(const FileMapping& mapping, WorkList& work) const
{
    const QString holder = mapping.GetSourceFile();
    for (const SyncServices::FileLink& link : mapping.GetSourceFileLinks()) {
        if (CheckIfCanceled())
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

bool FileLinkExtractorImp::ExtractFileLinks(const FileMappingPointer& mapping,
                                            const QStringList& fileTypes)
{
    const QString source = mapping->GetSourceFile();
    const bool supported = fileTypes.isEmpty() || SyncLibUtil::IsInFileTypeList(source, fileTypes);
    if (!supported)
        mapping->SetFlag(FileMapping::FileLinksNotSupported, true);

    const bool isInCloudFolder = mapping->IsSourceFileInCloudCacheFolder();
    QDateTime restoredDate;
    if (!isInCloudFolder) {
        RestoreFromHistory(*mapping, supported);
        restoredDate = mapping->GetSourceFileLinksExtractedAtFileDate();
    } else if (supported) {
        restoredDate = RestoreFromDatabase(*mapping);
    }
    if (!supported) {
        FILELINK_LOG(LogLevel::Debug,
                     QStringLiteral("File link extraction skipped for file %1. File links not "
                                    "supported for this file type.")
                         .arg(source));
        return true;
    }
    if (CheckIfCanceled())
        return false;
    if (IsSameSecond(LastModified(source), restoredDate)) {
        FILELINK_LOG(LogLevel::Info,
                     (isInCloudFolder
                          ? QStringLiteral("File link extraction skipped for file %1. File links "
                                           "restored from sync database.")
                          : QStringLiteral("File link extraction skipped for file %1. File links "
                                           "restored from copy history."))
                         .arg(source));
        LogFileLinks(source, mapping->GetSourceFileLinks());
        return true;
    }
    return ExtractAfresh(mapping, isInCloudFolder);
}

QDateTime FileLinkExtractorImp::RestoreFromDatabase(FileMapping& mapping) const
{
    const std::shared_ptr<SyncDatabase> database = m_database ? m_database : GetDatabase();
    const std::shared_ptr<SyncItem> item =
        database ? database->GetSyncItem(mapping.GetSourceFile(), true, GetAuthenticationId(),
                                         FileItem::ItemOnly)
                 : nullptr;
    if (!item)
        return QDateTime();
    mapping.SetSourceFileLinks(item->GetFileLinks());
    mapping.SetSourceFileLinksExtractedAtFileDate(item->GetFileLinksExtractedAtFileDate());
    return item->GetFileLinksExtractedAtFileDate();
}

void FileLinkExtractorImp::RestoreFromHistory(FileMapping& mapping, bool supported)
{
    const FileMappingPointer earlier =
        m_history->Find(mapping.GetSourceFile(), GetAuthenticationId());
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

bool FileLinkExtractorImp::ExtractAfresh(const FileMappingPointer& mapping, bool isInCloudFolder)
{
    const QString source = mapping->GetSourceFile();
    // Taken before the file is read: a change meanwhile must count as one next time.
    const QDateTime modified = LastModified(source).toUTC();
    FileLinkList links;
    if (!ExtractFileLinks(source, links) || CheckIfCanceled())
        return false;
    mapping->SetSourceFileLinks(links);
    mapping->SetSourceFileLinksExtractedAtFileDate(modified);
    if (!isInCloudFolder)
        m_history->AddOrUpdate(mapping);
    return true;
}

bool FileLinkExtractorImp::ExtractFileLinks(const QString& path, FileLinkList& links)
{
    if (!PathExists(path)) {
        FILELINK_PROBLEM(
            m_problems.get(), FILELINK_FUNCTION, LogLevel::Error,
            QStringLiteral("Failed to extract file links from %1. File not found.").arg(path),
            {Stage::ExtractFileLinks, ProblemKind::FileMissing, path, {}, {}});
        return false;
    }
    FILELINK_LOG(LogLevel::Trace, QStringLiteral("Extracting file links from %1").arg(path));
    QList<FileLinkInfo> infos;
    if (PluginManager* const manager = GetPluginManager()) {
        // A file that its plug-in could not read has no links; the manager has said why.
        FileLinkResolverContext context(
            CallProblems(m_problems.get(), Stage::ExtractFileLinks, path));
        static_cast<void>(manager->GetFileLinks(path, infos, &context));
    }
    for (const FileLinkInfo& info : std::as_const(infos)) {
        if (CheckIfCanceled())
            return false;
        SyncServices::FileLink link;
        link.RefId = GetReferenceId(info);
        link.Path = StoredPath(GetLinkPath(info), path);
        links.append(link);
    }
    LogFileLinks(path, links);
    return true;
}

QString FileLinkExtractorImp::StoredPath(const QString& linkPath, const QString& holder) const
{
    const QString resolved = ResolveLinkPath(linkPath, holder);
    if (PathExists(resolved))
        return linkPath;
    const QString name = QFileInfo(resolved).fileName();
    const QFileInfo neighbour(QFileInfo(holder).absolutePath() + u'/' + name);
    return !name.isEmpty() && neighbour.isFile() ? name : linkPath;
}

void FileLinkExtractorImp::LogFileLinks(const QString& path, const FileLinkList& links) const
{
    if (links.isEmpty())
        FILELINK_LOG(LogLevel::Info, QStringLiteral("No file links found in %2").arg(path));
    else
        FILELINK_LOG(LogLevel::Info,
                     QStringLiteral("%1 file links found in %2").arg(links.size()).arg(path));
    for (const SyncServices::FileLink& link : links) {
        const QString resolved = ResolveLinkPath(link.Path, path);
        if (!IsLocalPath(resolved) || PathExists(resolved))
            FILELINK_LOG(
                LogLevel::Debug,
                QStringLiteral("File link: Path: %1 RefId: %2").arg(link.Path).arg(link.RefId));
        else
            FILELINK_LOG(LogLevel::Warn,
                         QStringLiteral("File link: Path: %1 RefId: %2 (File not found: %3)")
                             .arg(link.Path)
                             .arg(link.RefId)
                             .arg(resolved));
    }
}

} // namespace Halvern::FileLink
