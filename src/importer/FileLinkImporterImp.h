// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"
#include "syncplugin/FileLinkInfo.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::FileLink {

class PlatformServices;

/// Runs one import: holds its state and calls its stages. In the order in which a file meets them,
/// each a file of its own in src/stages:
///
///     Initialize              SelectionIntake
///     ExtractFileLinks        FileLinkExtraction, through FileLinkExtractorImp
///     AssignTargetPaths       TargetAssignment, DefaultLayout
///     MarkCollisions          CollisionMarking
///     ResolveCollisions       CollisionResolution
///     CopyFiles               Copying, FileReplacement
///       LogFileTree           FileTreeLog (before and after)
///       ComputeTargetFileLinks  TargetLinks
///     RepathFiles             Repathing, DeferredRepathing
///     UpdateSyncDatabase      DatabaseUpdate
///
/// Worked example. The selection D:/a/x.asm goes to F/x.asm. Its link ../lib/c.prt brings the
/// mapping D:/lib/c.prt into the set, which gets the target F/lib/c.prt; the copy F/x.asm then
/// holds the link lib/c.prt.
///
/// No exception leaves a stage, nor a job of several: it ends as failed, with a line in the log and
/// a problem.
class FileLinkImporterImp : public QObject
{
    Q_OBJECT

public:
    using CopyOption = Global::CopyOption;

    explicit FileLinkImporterImp(std::shared_ptr<ICancelController> controller);
    ~FileLinkImporterImp() override;

    void SetProblemSink(std::shared_ptr<IProblemSink> sink);
    void SetSyncDatabase(std::shared_ptr<SyncDatabase> database);

    bool CopyToCloudCacheFolder(const QStringList& sources, const QString& target,
                                CopyOption options, const QStringList& fileTypes);
    bool CopyFileLinksToCloudCacheFolder(const QString& sourceFile, const QString& target,
                                         CopyOption options, const QStringList& fileTypes);
    bool ExtractAndImportFileLinksOfCloudFiles(int id, const QStringList& files,
                                               const QList<SyncItem::SyncOption>& options);

    bool Initialize(const QStringList& sources, QString target, bool targetIsFile,
                    CopyOption options, const QStringList& fileTypes);
    bool ExtractFileLinks();
    bool AssignTargetPaths();
    bool MarkCollisions();
    bool MarkCollisions(const FileMappingPointer& mapping);
    bool ResolveCollisions();
    bool AssignUniqueTargetName(const FileMappingPointer& mapping);
    bool CopyFiles();
    bool CopyFile(const FileMappingPointer& mapping, bool deleteSource);
    bool CreateFolder(const QString& path, bool hidden);
    bool ComputeTargetFileLinks();
    bool RepathFiles();
    bool RepathFile(const FileMappingPointer& mapping);
    bool RepathFile(const QString& path, const QList<SyncPlugin::FileLinkInfo>& links);
    bool RepathFile(const QString& path, const FileLinkList& links);
    bool RepathFiles(int folderId);
    bool RepathFiles(const QList<std::shared_ptr<SyncItem>>& items);
    bool ReadFileLinks(const QString& path, FileLinkList& links);
    bool UpdateSyncDatabase();

    std::shared_ptr<FileSet> GetFileSet() const { return m_context.fileSet; }
    CopyOption GetCopyOption() const { return m_context.options; }
    void SetCopyOption(CopyOption option, bool on);

    /// The cancellation poll: logs and returns true once the host has asked to stop.
    bool CheckIfCanceled() const;

Q_SIGNALS:
    void FolderCreated(QString newFolder);
    void FileCopied(QString sourceFile, QString targetFile);
    void FileMoved(QString sourceFile, QString targetFile);
    void FileModified(QString file);

private:
    bool ImportCloudFiles(const QStringList& files, const QList<SyncItem::SyncOption>& options);
    bool UpdateDatabaseOfCloudFile(const QString& file, const QStringList& fileTypes);

    std::unique_ptr<FileCopyHistory> m_copyHistory;
    std::shared_ptr<PlatformServices> m_services;
    StageContext m_context;
};

} // namespace Halvern::FileLink
