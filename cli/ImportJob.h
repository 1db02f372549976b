// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Cancellation.h"
#include "Conflicts.h"
#include "Options.h"

#include "filelink/FileLinkImporter.h"
#include "syncservices/SyncDatabase.h"

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::Cli {

class ProgressLine;

/// Drives an importer through its stages, with the host's own steps in between:
///
///     Plan      Initialize, ExtractFileLinks, AssignTargetPaths, MarkCollisions, MarkUpToDate,
///               these three once more when MarkForAnotherPlace finds files,
///               ResolveCollisions, SettleTargets: nothing is written
///     Execute   CopyFiles, RepathTargetFiles, IncludeRepathedInPlace, UpdateSyncDatabase
///     Finish    the importer ends, which records what was copied
///
/// A cancel ends either step at the next poll and makes the following ones do nothing. Requires a
/// session that outlives the job.
class ImportJob
{
public:
    ImportJob(const ImportOptions& options, ProgressLine& progress);
    ~ImportJob();
    ImportJob(const ImportJob&) = delete;
    ImportJob& operator=(const ImportJob&) = delete;

    /// Sources and target are absolute. Throws CommandError(Failed) when the module refuses them.
    void Plan(const QStringList& sources, const QString& target);
    void Execute();
    void Finish();

    bool WasCancelled() const { return m_controller->StoppedJob(); }
    /// False when nothing was executed: planned only, or cancelled before.
    bool WasExecuted() const { return m_executed; }
    /// What keeps the plan from being executed.
    const QList<Conflict>& Conflicts() const { return m_conflicts; }
    /// Null when the job was cancelled before there was one.
    FileLink::FileSet* Files() const { return m_files.get(); }
    /// The file gets another target than the one that was taken.
    bool IsRenamed(const SyncServices::FileMapping& file) const;
    /// The source was deleted after copying.
    bool IsMoved(const SyncServices::FileMapping& file) const;
    const ImportOptions& GetOptions() const { return m_options; }
    /// Why the sync database failed; empty when it did not.
    QString DatabaseError() const { return m_database->GetLastError(); }

private:
    /// False when the job is cancelled, before the stage or by it.
    template <typename Stage>
    bool Run(const QString& phase, qint64 total, Stage stage);
    void ConnectProgress();
    bool AssignTargets();
    bool AssignOtherTargets();
    bool MarkCollisions();
    void NoteTargets();
    qint64 CountFilesToCopy() const;
    void IncludeRepathedInPlace();
    void RecordInterruptedRepath();

    const ImportOptions& m_options;
    ProgressLine& m_progress;
    std::shared_ptr<JobController> m_controller;
    std::shared_ptr<SyncServices::SyncDatabase> m_database;
    std::unique_ptr<FileLink::FileLinkImporter> m_importer;
    std::shared_ptr<FileLink::FileSet> m_files;
    /// Targets before collisions were resolved.
    TargetByFile m_wantedTargets;
    QSet<QString> m_moved;
    QSet<QString> m_modified;
    QList<Conflict> m_conflicts;
    bool m_executed = false;
};

} // namespace Halvern::Cli
