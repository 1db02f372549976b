// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"
#include "importer/PlatformServices.h"

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

Global::CopyOption CopyOptionOf(SyncItem::SyncOption option)
{
    Global::CopyOption result = Global::LinkedFilesOnly;
    if (option & SyncItem::SkipFileLinks)
        result |= Global::UpdateSelectedInDatabase;
    if (option & SyncItem::KeepExistingLinkedFiles)
        result |= Global::KeepExistingLinkedFiles;
    if (option & SyncItem::RenameLinkedFiles)
        result |= Global::RenameLinkedFiles;
    return result;
}

} // namespace

bool FileLinkImporterImp::CopyToCloudCacheFolder(const QStringList& sources, const QString& target,
                                                 CopyOption options, const QStringList& fileTypes)
{
    if (!PlatformServices::IsLoggedIn() || !PlatformServices::IsSyncEnabled())
        return false;
    if (!Initialize(sources, target, true, options, fileTypes))
        return false;
    if (!ExtractFileLinks())
        return false;
    AssignTargetPaths();
    MarkCollisions();
    // Whatever policy the options hold, no colliding file is replaced or left out here.
    for (const FileMappingPointer& mapping : m_context.Files())
        if (mapping->HasFlag(FileMapping::Collision) && !mapping->IsFolder())
            mapping->SetFlag(FileMapping::RenameOnCollision, true);
    ResolveCollisions();
    const bool copied = CopyFiles();
    RepathFiles();
    UpdateSyncDatabase();
    return copied;
}

bool FileLinkImporterImp::CopyFileLinksToCloudCacheFolder(const QString& sourceFile,
                                                          const QString& target, CopyOption options,
                                                          const QStringList& fileTypes)
{
    if (target.isEmpty())
        return false;
    QStringList sources;
    if (!sourceFile.isEmpty())
        sources.append(sourceFile);
    return CopyToCloudCacheFolder(sources, target, options | Global::LinkedFilesOnly, fileTypes);
}

bool FileLinkImporterImp::ExtractAndImportFileLinksOfCloudFiles(
    int id, const QStringList& files, const QList<SyncItem::SyncOption>& options)
{
    if (id == -1)
        return false;
    if (files.isEmpty())
        return true;
    if (files.size() != options.size())
        return false;
    return RunStage(m_context, Stage::Intake, Operation::ImportCloudFiles,
                    [&] { return ImportCloudFiles(files, options); });
}

bool FileLinkImporterImp::ImportCloudFiles(const QStringList& files,
                                           const QList<SyncItem::SyncOption>& options)
{
    if (CheckIfCanceled())
        return false;
    const QStringList fileTypes = PlatformServices::SupportedFileTypes();
    for (qsizetype i = 0; i < files.size(); ++i) {
        if (CheckIfCanceled())
            return false;
        const QString& file = files[i];
        if (options[i] & SyncItem::ImportLinkedFiles) {
            FILELINK_LOG_FOR(Operation::ImportCloudFiles, LogLevel::Info,
                             QStringLiteral("Processing file links in %1").arg(file));
            CopyFileLinksToCloudCacheFolder(QString(), file, CopyOptionOf(options[i]), fileTypes);
        } else {
            FILELINK_LOG_FOR(
                Operation::ImportCloudFiles, LogLevel::Info,
                QStringLiteral("Updating file links of file %1 in database").arg(file));
            UpdateDatabaseOfCloudFile(file, fileTypes);
        }
    }
    return true;
}

bool FileLinkImporterImp::UpdateDatabaseOfCloudFile(const QString& file,
                                                    const QStringList& fileTypes)
{
    if (!PlatformServices::IsSyncEnabled())
        return false;
    if (!Initialize(QStringList(), file, true,
                    Global::RecordSelectedInDatabase | Global::ServicesCopyOption, fileTypes))
        return false;
    if (!ExtractFileLinks())
        return false;
    ComputeTargetFileLinks();
    UpdateSyncDatabase();
    return true;
}

} // namespace Halvern::FileLink
