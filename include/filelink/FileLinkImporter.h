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
/// importer serves one import at a time, from one thread; its signals are raised on that thread.
/// What was copied is remembered for later imports when the importer is destroyed.
///
/// Failures of single files are logged and do not stop a stage; a cancel does, and the stage's
/// result is false then. Nothing that was done is undone. A failure is a result, never an
/// exception.
///
/// Paths are absolute, with forward slashes. Lists of file types hold extensions as
/// SyncServices::SyncLibUtil::IsInFileTypeList takes them.
///
/// Requires: FileLinkManager::Initialize was called, and the last Uninitialize was not.
class FILELINK_EXPORT FileLinkImporter : public QObject
{
    Q_OBJECT

public:
    /// An importer that is never cancelled.
    FileLinkImporter();
    /// Shares the controller until it is destroyed itself; null is an importer that is never
    /// cancelled.
    explicit FileLinkImporter(std::shared_ptr<ICancelController> controller);
    /// Writes what was copied to the sync database.
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
    /// handled; empty means all. Sources that do not exist or lie in the cloud cache folder already
    /// are passed over, so that the new set may be empty.
    ///
    /// False on bad arguments, without a cloud cache folder and on cancel; the earlier file set
    /// stays then, but options and file types are the new ones.
    [[nodiscard]] bool Initialize(QStringList sources, QString target, bool targetIsFile,
                                  SyncServices::Global::CopyOption options,
                                  const QStringList& fileTypes);
    /// The whole import. Files whose target is taken get a new name. `targetIsFile` has no
    /// meaning: a single source always goes to exactly `target` unless that is a folder.
    ///
    /// True when the copy stage ran to its end, whatever became of single files or of the stages
    /// around it. False when not logged in, when cloud cache folder sync is off, when Initialize or
    /// ExtractFileLinks failed, and on cancel.
    [[nodiscard]] bool CopyToCloudCacheFolder(QStringList sources, QString target,
                                              bool targetIsFile,
                                              SyncServices::Global::CopyOption options,
                                              const QStringList& fileTypes);
    /// Copies only what `sourceFile` links; with an empty `sourceFile`, what the existing file
    /// `target` links, rewriting its links. The result is that of CopyToCloudCacheFolder; false
    /// also for an empty target.
    [[nodiscard]] bool CopyFileLinksToCloudCacheFolder(const QString& sourceFile,
                                                       const QString& target,
                                                       SyncServices::Global::CopyOption options,
                                                       const QStringList& fileTypes);
    /// For files that lie in the cloud cache folder already: each is handled as the sync option at
    /// its index says. True when all were tried, whatever came of it; false for a `folderId` of -1
    /// (which serves no other purpose), for lists of unequal length and on cancel.
    [[nodiscard]] bool
    ExtractAndImportFileLinksOfCloudFiles(int folderId, const QStringList& files,
                                          const QList<SyncServices::SyncItem::SyncOption>& options);

    /// The stages, in their order. Each works on the file set as the stages before left it. A host
    /// may go on after a false, as CopyToCloudCacheFolder does: what became of each file stands in
    /// the set, and after a cancel the next stage stops at its first file.

    /// Adds every file that is linked, directly or by a linked file. True also when no file's type
    /// has links, when single files could not be read, and without a file set; false on cancel.
    bool ExtractFileLinks();
    /// Gives linked files their targets: first by layout plug-ins, then below the file that links
    /// them. A file whose path is an address gets none. False on cancel and without a file set.
    bool AssignTargetPaths();
    /// Sets SourceMissing, SameSourceAndTarget, Collision and Unchanged anew. False on cancel and
    /// when a file has no target; the others are marked all the same.
    bool MarkCollisions();
    /// Settles collisions as the copy options say. False on cancel and when no free name was found;
    /// a file whose collision nothing settles is replaced by CopyFiles.
    bool ResolveCollisions();
    /// Copies, or moves with Global::MoveFiles, and computes the links that the copies must hold.
    /// True when the stage ran to its end, whatever failed; the log and the Copied flags tell.
    /// False on cancel and for an empty set.
    bool CopyFiles();
    /// Does nothing and returns true: CopyFiles computes the target links itself.
    bool ValidateTargetFileLinks();
    /// Rewrites the links inside what was copied, and inside files that link what was copied. True
    /// when every such file was rewritten or had nothing to rewrite; false when one is missing,
    /// locked (its NeedsRepath flag stays) or was refused by its plug-in, and on cancel.
    bool RepathTargetFiles();
    /// Rewrites the files of a folder of the sync database that were locked at their import. True
    /// when all were tried; those that are still locked stay pending. False when there is no such
    /// folder (an id of -1 never is one).
    [[nodiscard]] bool RepathFiles(int folderId);
    /// Rewrites the given links inside one file, found by their RefId, to their Path. False when
    /// the file is missing or locked, or when its plug-in could not; the log tells.
    [[nodiscard]] bool RepathFile(const QString& file, const QList<SyncServices::FileLink>& links);
    /// The links inside one file, in the order of the file and letter by letter as its plug-in
    /// reads them, whether or not they lead anywhere. Appended to `links`. True when a plug-in read
    /// the file, and also when none is for such files; false without the file and when its plug-in
    /// could not: the problems tell.
    [[nodiscard]] bool ReadFileLinks(const QString& file, QList<SyncServices::FileLink>& links);
    /// Writes what was copied, and its links, to the sync database. True when every file got as far
    /// as being written, and also when no file's type has links; false without a database, when a
    /// copy is missing, and on cancel. Whether the database took it tells its GetLastError().
    bool UpdateSyncDatabase();

    /// The current set, shared with the importer: the host may keep it longer. Null before the
    /// first Initialize, which replaces it, as do the calls for a whole import.
    std::shared_ptr<FileSet> GetFileSet();
    SyncServices::Global::CopyOption GetCopyOption() const;
    /// Adds (`on`) or removes bits for the stages that follow; Initialize sets all anew.
    void SetCopyOption(SyncServices::Global::CopyOption option, bool on);

Q_SIGNALS:
    /// A folder was made for a target. Raised for a selected folder that could not be made, too.
    void FolderCreated(QString newFolder);
    /// A copy is complete, its links not yet rewritten.
    void FileCopied(QString sourceFile, QString targetFile);
    /// The same for a move; the source is gone.
    void FileMoved(QString sourceFile, QString targetFile);
    /// The links inside a file were rewritten.
    void FileModified(QString file);

private:
    void ConnectSignals();

    /// Owned.
    FileLinkImporterImp* m_imp;
};

} // namespace Halvern::FileLink
