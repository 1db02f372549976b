// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/FileSet.h"
#include "filelink/ICancelController.h"
#include "filelink/Problem.h"
#include "fileset/FileCopyHistory.h"
#include "fileset/FileMappingRef.h"
#include "fileset/PathIndex.h"
#include "support/Platform.h"
#include "syncplugin/FileLinkInfo.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::FileLink {

class ProcessedItems;

/// Runs one import. The stages in the order in which a file meets them, one source file each:
///
///     Initialize              SelectionIntake.cpp
///     ExtractFileLinks        PipelineDriver.cpp, FileLinkExtractorImp.cpp
///     AssignTargetPaths       TargetAssignment.cpp, DefaultLayout.cpp
///     MarkCollisions          CollisionMarking.cpp
///     ResolveCollisions       CollisionResolution.cpp
///     CopyFiles               Copying.cpp, FileReplacement.cpp
///       LogFileTree           FileTreeLog.cpp (before and after)
///       ComputeTargetFileLinks  TargetLinks.cpp
///     RepathFiles             Repathing.cpp, DeferredRepathing.cpp
///     UpdateSyncDatabase      DatabaseUpdate.cpp
///
/// Worked example. The selection D:/a/x.asm goes to F/x.asm. Its link ../lib/c.prt brings the
/// mapping D:/lib/c.prt into the set, which gets the target F/lib/c.prt; the copy F/x.asm then
/// holds the link lib/c.prt.
class FileLinkImporterImp : public QObject
{
    Q_OBJECT

public:
    using NodePointer = std::shared_ptr<FileMappingRef>;
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
    /// The same for a folder of the selection, which problems then name.
    bool CreateFolder(const QString& path, bool hidden, const QString& source);
    bool ComputeTargetFileLinks();
    bool RepathFiles();
    bool RepathFile(const FileMappingPointer& mapping);
    bool RepathFile(const QString& path, const QList<SyncPlugin::FileLinkInfo>& links);
    bool RepathFile(const QString& path, const FileLinkList& links);
    bool RepathFiles(int folderId);
    bool RepathFiles(const QList<std::shared_ptr<SyncItem>>& items);
    bool UpdateSyncDatabase();

    std::shared_ptr<FileSet> GetFileSet() const { return m_fileSet; }
    CopyOption GetCopyOption() const { return m_copyOptions; }
    void SetCopyOption(CopyOption option, bool on);

    /// The cancellation poll: logs and returns true once the host has asked to stop.
    bool CheckIfCanceled() const;

Q_SIGNALS:
    void FolderCreated(QString newFolder);
    void FileCopied(QString sourceFile, QString targetFile);
    void FileMoved(QString sourceFile, QString targetFile);
    void FileModified(QString file);

private:
    /// Mappings with an index of their source paths.
    struct SourceList
    {
        explicit SourceList(FileMappingList list);
        FileMappingPointer Find(const QString& path) const;

        FileMappingList files;
        PathIndex index;
    };
    /// Paths selected for import, with their names relative to the target folder.
    struct Selection
    {
        QStringList paths;
        QStringList names;
        PathIndex selected;
    };
    struct CopyCounters
    {
        quint32 copied = 0;
        quint32 foldersCreated = 0;
        quint32 failed = 0;
        quint32 skipped = 0;
    };
    struct DatabaseUpdateState;

    std::shared_ptr<SyncDatabase> Database() const;
    std::shared_ptr<SyncItem> RootItem() const;
    /// For failures that the log does not tell.
    void Report(Stage stage, ProblemKind kind, const QString& file, const QString& text = {}) const;
    bool HasFilesWhichSupportFileLinks() const;
    FileMappingList Files() const;
    QList<NodePointer> Hierarchy(bool useSourceLinks) const;
    bool HasOption(CopyOption option) const;

    bool UpdateDatabaseOfCloudFile(const QString& file, const QStringList& fileTypes);

    bool FilterSources(const QStringList& sources, Selection& selection,
                       QStringList& selected) const;
    bool ExpandSelection(const QStringList& selected, Selection& selection) const;
    FileMappingFlag FlagsOfSelected(const QString& path, const Selection& selection) const;

    bool AssignPluginTargetPaths(const NodePointer& node);
    bool AssignDefaultTargetPaths();
    bool AssignDefaultTargetPaths(const NodePointer& parent, QSet<const FileMapping*>& visited);
    static bool AssignDefaultTargetPath(const FileMappingRef& parent, FileMappingRef& child);

    FileMappingFlag DecideCollision(const FileMapping& mapping) const;

    bool CopyAll(const FileMappingList& files, bool move, CopyCounters& counters);
    bool SkipCopy(const FileMappingPointer& mapping);
    bool RemoveMovedFolders(const FileMappingList& files);
    // Log in the name of `operation`, the signature of the function that they are part of.
    bool MakeParentFolder(const QString& source, const QString& target, const char* operation);
    QString ParkExistingFile(const QString& source, const QString& target, const char* operation);
    bool DeleteMovedSource(const QString& source, const QString& target, const char* operation);
    void DeleteParkedFile(const QString& source, const QString& parked, const QString& target,
                          const char* operation);

    bool ComputeTargetFileLinks(const FileMappingPointer& mapping, const SourceList& files);

    void LogFileTree(bool source) const;
    void LogFileTree(const NodePointer& node, bool source, int level,
                     QSet<QString>& processed) const;

    bool MarkFilesToRepath(const char* operation);
    bool LinksCopiedFile(const FileMappingPointer& mapping, bool& canceled) const;

    bool UpdateSyncDatabase(const NodePointer& node, DatabaseUpdateState& state);
    bool UpdateChildren(const NodePointer& node, DatabaseUpdateState& state, const char* operation);
    void ReportNotRecorded(const FileMapping* mapping, const DatabaseUpdateState& state,
                           const QString& text = {}) const;
    bool MergeLinks(const FileMapping& mapping, SyncItem& item) const;
    std::shared_ptr<SyncItem> MakeItem(const FileMapping& mapping,
                                       DatabaseUpdateState& state) const;
    void ResolveItemLinks(SyncItem& item, DatabaseUpdateState& state) const;

    std::shared_ptr<ICancelController> m_cancelController;
    std::shared_ptr<FileSet> m_fileSet;
    CopyOption m_copyOptions = Global::NoCopyOption;
    QStringList m_fileTypes;
    std::unique_ptr<FileCopyHistory> m_copyHistory;
    std::shared_ptr<IProblemSink> m_problems;
    std::shared_ptr<SyncDatabase> m_database;
};

} // namespace Halvern::FileLink
