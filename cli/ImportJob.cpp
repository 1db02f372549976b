// SPDX-License-Identifier: Apache-2.0

#include "ImportJob.h"

#include "ProgressLine.h"
#include "ReadOnlyDatabase.h"
#include "UpToDate.h"

#include "syncservices/FolderManager.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Cli {

using FileLink::FileLinkImporter;
using SyncFolderManagerLib::FolderManager;
using SyncServices::FileMapping;
using SyncServices::Global;

namespace {

Global::CopyOption PolicyBits(CollisionPolicy policy, Global::CopyOption keep,
                              Global::CopyOption rename)
{
    switch (policy) {
    case CollisionPolicy::Keep:
        return keep;
    case CollisionPolicy::Rename:
        return rename;
    case CollisionPolicy::Stop:
    case CollisionPolicy::Replace:
        // Left to the copy stage, which replaces the target.
        return Global::NoCopyOption;
    }
    return Global::NoCopyOption;
}

Global::CopyOption CopyOptions(const ImportOptions& options)
{
    Global::CopyOption bits =
        PolicyBits(options.selectedCollisions, Global::KeepExistingSelectedFiles,
                   Global::RenameSelectedFiles) |
        PolicyBits(options.linkedCollisions, Global::KeepExistingLinkedFiles,
                   Global::RenameLinkedFiles);
    if (options.move)
        bits |= Global::MoveFiles;
    if (options.linksOnly)
        bits |= Global::LinkedFilesOnly;
    if (options.directLinksOnly)
        bits |= Global::DirectLinksOnly;
    return bits;
}

void UseDatabase(std::shared_ptr<SyncServices::SyncDatabase> database)
{
    FolderManager::GetInstance()->SetSyncDatabase(std::move(database));
}

} // namespace

ImportJob::ImportJob(const ImportOptions& options, ProgressLine& progress)
    : m_options(options), m_progress(progress),
      m_controller(std::make_shared<JobController>([&progress] { progress.Tick(); })),
      m_database(FolderManager::GetInstance()->GetSyncDatabase()),
      m_importer(std::make_unique<FileLinkImporter>(m_controller))
{
    ConnectProgress();
    UseDatabase(std::make_shared<ReadOnlyDatabase>(m_database));
}

ImportJob::~ImportJob()
{
    Finish();
}

void ImportJob::ConnectProgress()
{
    const auto onCopied = [this](const QString&, const QString& target) {
        m_progress.Step(m_progress.IsActive() ? QFileInfo(target).size() : 0);
    };
    QObject::connect(m_importer.get(), &FileLinkImporter::FileCopied, onCopied);
    QObject::connect(m_importer.get(), &FileLinkImporter::FileMoved,
                     [this, onCopied](const QString& source, const QString& target) {
                         m_moved.insert(source);
                         onCopied(source, target);
                     });
    QObject::connect(m_importer.get(), &FileLinkImporter::FileModified,
                     [this](const QString& file) {
                         m_modified.insert(file);
                         m_progress.Step(0);
                     });
}

template <typename Stage>
bool ImportJob::Run(const QString& phase, qint64 total, Stage stage)
{
    if (m_controller->IsCancelRequested())
        return false;
    m_progress.Begin(phase, total);
    stage();
    return !m_controller->StoppedJob();
}

void ImportJob::Plan(const QStringList& sources, const QString& target)
{
    bool accepted = true;
    const auto initialize = [&] {
        accepted =
            m_importer->Initialize(sources, target, false, CopyOptions(m_options), m_options.types);
    };
    if (!Run(QStringLiteral("Reading the selection"), 0, initialize))
        return;
    if (!accepted)
        throw CommandError(ExitCode::Failed, QStringLiteral("the selection could not be read"));
    m_files = m_importer->GetFileSet();
    if (!Run(QStringLiteral("Reading links"), 0, [&] { m_importer->ExtractFileLinks(); }) ||
        !AssignTargets() || !MarkCollisions())
        return;
    NoteTargets();
    if (!AssignOtherTargets())
        return;
    if (Run(QStringLiteral("Resolving conflicts"), 0, [&] { m_importer->ResolveCollisions(); }))
        m_conflicts = SettleTargets(*m_files, m_options, m_wantedTargets);
}

bool ImportJob::AssignTargets()
{
    return Run(QStringLiteral("Laying out"), 0, [&] { m_importer->AssignTargetPaths(); });
}

bool ImportJob::MarkCollisions()
{
    const TargetByFile places = TargetsOf(*m_files);
    const auto mark = [&] { m_importer->MarkCollisions(); };
    if (!Run(QStringLiteral("Looking for conflicts"), 0, mark))
        return false;
    KeepWhereTheyAreLookedFor(*m_files, places);
    MarkUpToDate(*m_files, *m_database);
    return true;
}

/// A layout does not know what stands in the way when it is asked first.
bool ImportJob::AssignOtherTargets()
{
    const auto marked = MarkForAnotherPlace(*m_files, m_options);
    if (marked.isEmpty())
        return true;
    const bool assigned = AssignTargets();
    for (const auto& file : marked)
        file->SetFlag(FileMapping::RenameOnCollision, false);
    // What was up to date at its old place is not at the new one.
    for (const auto& file : m_files->GetFiles())
        file->SetFlag(FileMapping::Copied, false);
    if (!assigned || !MarkCollisions())
        return false;
    for (const auto& file : m_files->GetFiles())
        if (!QFileInfo::exists(m_wantedTargets.value(file.get())))
            m_wantedTargets.insert(file.get(), file->GetTargetFile());
    return true;
}

void ImportJob::Execute()
{
    if (!m_conflicts.isEmpty() || m_controller->IsCancelRequested())
        return;
    UseDatabase(m_database);
    m_executed = true;
    if (!Run(QStringLiteral("Copying"), CountFilesToCopy(), [&] { m_importer->CopyFiles(); }) ||
        !Run(QStringLiteral("Rewriting links"), 0, [&] { m_importer->RepathTargetFiles(); })) {
        RecordInterruptedRepath();
        return;
    }
    IncludeRepathedInPlace();
    Run(QStringLiteral("Recording"), 0, [&] { m_importer->UpdateSyncDatabase(); });
}

void ImportJob::Finish()
{
    m_progress.Clear();
    if (!m_importer)
        return;
    m_importer.reset();
    UseDatabase(m_database);
}

void ImportJob::NoteTargets()
{
    m_wantedTargets = TargetsOf(*m_files);
}

bool ImportJob::IsRenamed(const FileMapping& file) const
{
    return m_wantedTargets.value(&file, file.GetTargetFile()) != file.GetTargetFile();
}

bool ImportJob::IsMoved(const FileMapping& file) const
{
    return m_moved.contains(file.GetSourceFile());
}

qint64 ImportJob::CountFilesToCopy() const
{
    const FileMapping::FileMappingFlag notCopied =
        FileMapping::Folder | FileMapping::Unchanged | FileMapping::NoCopy |
        FileMapping::NotFilePath | FileMapping::SourceMissing | FileMapping::SameSourceAndTarget;
    const auto files = m_files->GetFiles();
    return std::count_if(files.begin(), files.end(),
                         [&](const auto& file) { return !file->HasFlagAny(notCopied); });
}

/// The module records what was copied. A file that stays where it is, but whose links were
/// rewritten because a file that it links got a new place, has new links as well; and when it was
/// locked, only its record can tell that they are still to be rewritten.
void ImportJob::IncludeRepathedInPlace()
{
    const auto inPlace =
        FileMapping::NoCopy | FileMapping::Unchanged | FileMapping::SameSourceAndTarget;
    for (const auto& file : m_files->GetFiles())
        if (file->HasFlagAny(inPlace) && file->ExistsInTarget() &&
            file->HasFlagAny(FileMapping::NeedsRepath | FileMapping::Repathed))
            file->SetFlag(FileMapping::Copied, true);
}

/// A cancel may fall between the rewriting of a file and the module's note of the file's new date.
/// Without that note the next import would take the copy for one that somebody else changed.
void ImportJob::RecordInterruptedRepath()
{
    for (const auto& file : m_files->GetFiles())
        if (m_modified.contains(file->GetTargetFile()) && !file->HasFlag(FileMapping::Repathed))
            file->UpdateTargetFileProperties();
}

} // namespace Halvern::Cli
