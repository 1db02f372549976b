// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/Export.h"
#include "filelink/FileSet.h"
#include "filelink/ICancelController.h"
#include "filelink/Problem.h"
#include "syncservices/FileLink.h"
#include "syncservices/Global.h"
#include "syncservices/SyncDatabase.h"
#include "syncservices/SyncItem.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::FileLink {

class FileLinkImporterImp;

/// Brings files into the cloud cache folder together with every file that they link, and rewrites
/// the links inside the copies so that they point at the copies.
///
///     CopyToCloudCacheFolder
///       Initialize            selection -> file set
///       ExtractFileLinks      links -> more members of the set
///       AssignTargetPaths     a target for every linked file
///       MarkCollisions        what stands in the way, what is unchanged
///       ResolveCollisions     keep, rename or leave to be replaced
///       CopyFiles             copies or moves
///       RepathTargetFiles     rewrites the links inside the copies
///       UpdateSyncDatabase    items and their links
///
/// A host runs the whole with one call, or stage by stage, looking at GetFileSet() in between. One
/// importer serves one import at a time, from one thread. FileLinkManager::Initialize must have
/// been called. What was copied is remembered for later imports when the importer is destroyed.
///
/// Failures of single files are logged and do not stop a stage; a cancel does. Nothing that was
/// done is undone.
class FILELINK_EXPORT FileLinkImporter : public QObject
{
    Q_OBJECT

public:
    /// An importer that is never cancelled.
    FileLinkImporter();
    explicit FileLinkImporter(std::shared_ptr<ICancelController> controller);
    ~FileLinkImporter() override;

    /// Who is told what goes wrong from now on, next to the log; null: nobody. May be set at any
    /// time between stages.
    void SetProblemSink(std::shared_ptr<IProblemSink> sink);
    /// The database that this importer reads and writes from now on in place of the platform
    /// library's; null: that one again. What was read before is kept, and what was copied is
    /// remembered in the one that is set when the importer is destroyed. A stand-in that writes
    /// nothing lets a host look at what an import would do.
    void SetSyncDatabase(std::shared_ptr<SyncServices::SyncDatabase> database);

    /// Builds a new file set from the selection. `target` is a folder, absolute or relative to the
    /// cloud cache folder (empty: that folder itself); with `targetIsFile` a single source goes to
    /// exactly `target` unless that is a folder. No sources and an existing file as the target make
    /// that file source and target in one. `fileTypes` lists the extensions whose links are
    /// handled; empty means all. False on bad arguments and on cancel; the earlier file set stays
    /// then.
    bool Initialize(QStringList sources, QString target, bool targetIsFile,
                    SyncServices::Global::CopyOption options, const QStringList& fileTypes);
    /// The whole import. Files whose target is taken get a new name. The result is that of the copy
    /// stage; false also when not logged in or when cloud cache folder sync is off. The bool is not
    /// used.
    bool CopyToCloudCacheFolder(QStringList sources, QString target, bool targetIsFile,
                                SyncServices::Global::CopyOption options,
                                const QStringList& fileTypes);
    /// Copies only what `sourceFile` links; with an empty `sourceFile`, what the existing file
    /// `target` links, rewriting its links.
    bool CopyFileLinksToCloudCacheFolder(const QString& sourceFile, const QString& target,
                                         SyncServices::Global::CopyOption options,
                                         const QStringList& fileTypes);
    /// For files that lie in the cloud cache folder already: each is handled as the sync option at
    /// its index says. False for an id of -1 and for lists of unequal length.
    bool
    ExtractAndImportFileLinksOfCloudFiles(int id, const QStringList& files,
                                          const QList<SyncServices::SyncItem::SyncOption>& options);

    bool ExtractFileLinks();
    bool AssignTargetPaths();
    bool MarkCollisions();
    bool ResolveCollisions();
    /// True when the stage ran to its end, whatever failed; the log and the Copied flags tell.
    bool CopyFiles();
    /// Does nothing and returns true: CopyFiles computes the target links itself.
    bool ValidateTargetFileLinks();
    bool RepathTargetFiles();
    /// Repaths the files of a folder of the sync database whose repathing was deferred.
    bool RepathFiles(int id);
    /// Rewrites the given links inside one file.
    bool RepathFile(const QString& file, const QList<SyncServices::FileLink>& links);
    bool UpdateSyncDatabase();

    /// The current set, shared with the importer; empty before the first Initialize.
    std::shared_ptr<FileSet> GetFileSet();
    SyncServices::Global::CopyOption GetCopyOption() const;
    /// Adds or removes bits for the stages that follow; Initialize sets all anew.
    void SetCopyOption(SyncServices::Global::CopyOption option, bool on);

Q_SIGNALS:
    void FolderCreated(QString newFolder);
    void FileCopied(QString sourceFile, QString targetFile);
    void FileMoved(QString sourceFile, QString targetFile);
    void FileModified(QString file);

private:
    void ConnectSignals();

    FileLinkImporterImp* m_imp;
};

} // namespace Halvern::FileLink
