// SPDX-License-Identifier: Apache-2.0

#include "JobRun.h"

#include "ResultStream.h"
#include "UpToDate.h"

#include "corsync/JobError.h"

#include "syncservices/FolderManager.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Jobs {

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

Global::CopyOption CopyOptions(const ImportRequest& request)
{
    Global::CopyOption bits =
        PolicyBits(request.selectedCollisions, Global::KeepExistingSelectedFiles,
                   Global::RenameSelectedFiles) |
        PolicyBits(request.linkedCollisions, Global::KeepExistingLinkedFiles,
                   Global::RenameLinkedFiles);
    if (request.move)
        bits |= Global::MoveFiles;
    if (request.linksOnly)
        bits |= Global::LinkedFilesOnly;
    if (request.directLinksOnly)
        bits |= Global::DirectLinksOnly;
    return bits;
}

} // namespace

JobRun::JobRun(const ImportRequest& request, const std::shared_ptr<JobControl>& control)
    : m_control(control),
      m_database(std::make_shared<JobDatabase>(FolderManager::GetInstance()->GetSyncDatabase())),
      m_importer(std::make_unique<FileLinkImporter>(control))
{
    m_state.request = request;
    m_importer->SetSyncDatabase(m_database);
    m_importer->SetProblemSink(control);
    ConnectSignals();
}

JobRun::~JobRun() = default;

void JobRun::ConnectSignals()
{
    const auto onCopied = [this](const QString& source, const QString&) {
        if (m_stream)
            m_stream->Copied(source);
    };
    QObject::connect(m_importer.get(), &FileLinkImporter::FileCopied, onCopied);
    QObject::connect(m_importer.get(), &FileLinkImporter::FileMoved,
                     [this, onCopied](const QString& source, const QString& target) {
                         m_state.moved.insert(source);
                         onCopied(source, target);
                     });
    QObject::connect(m_importer.get(), &FileLinkImporter::FileModified,
                     [this](const QString& file) {
                         m_state.modified.insert(file);
                         if (m_stream)
                             m_stream->Modified(file);
                     });
}

template <typename Stage>
bool JobRun::Run(Phase phase, qint64 total, Stage stage)
{
    if (!m_control->IsCancelRequested()) {
        m_control->BeginPhase(phase, total);
        stage();
    }
    m_state.cancelled = m_control->StoppedJob();
    if (m_stream)
        m_stream->EndPhase();
    return !m_state.cancelled;
}

void JobRun::Plan(const QStringList& sources, const QString& target)
{
    bool accepted = true;
    const auto initialize = [&] {
        accepted = m_importer->Initialize(sources, target, false, CopyOptions(m_state.request),
                                          m_state.request.fileTypes);
    };
    if (!Run(Phase::ReadingSelection, 0, initialize))
        return;
    if (!accepted)
        throw JobError(JobErrorKind::SelectionRefused,
                       QStringLiteral("the selection could not be read"));
    m_state.files = m_importer->GetFileSet();
    if (!Run(Phase::ReadingLinks, 0, [&] { m_importer->ExtractFileLinks(); }) || !AssignTargets() ||
        !MarkCollisions())
        return;
    m_state.wantedTargets = TargetsOf(*m_state.files);
    if (!AssignOtherTargets())
        return;
    if (Run(Phase::ResolvingConflicts, 0, [&] { m_importer->ResolveCollisions(); }))
        m_conflicts = SettleTargets(*m_state.files, m_state.request, m_state.wantedTargets);
    RequireWholePlan();
}

/// A stage that an exception ended leaves files out: the others would come without what they link,
/// and a move would delete their sources.
void JobRun::RequireWholePlan() const
{
    for (const FileLink::Problem& problem : m_control->Problems().All())
        if (problem.kind == FileLink::ProblemKind::StageEnded)
            throw JobError(JobErrorKind::PlanNotMade, problem.text);
}

bool JobRun::AssignTargets()
{
    return Run(Phase::LayingOut, 0, [&] { m_importer->AssignTargetPaths(); });
}

bool JobRun::MarkCollisions()
{
    const TargetByFile places = TargetsOf(*m_state.files);
    if (!Run(Phase::LookingForConflicts, 0, [&] { m_importer->MarkCollisions(); }))
        return false;
    KeepWhereTheyAreLookedFor(*m_state.files, places);
    MarkUpToDate(*m_state.files, *m_database);
    return true;
}

/// A layout does not know what stands in the way when it is asked first.
bool JobRun::AssignOtherTargets()
{
    const auto marked = MarkForAnotherPlace(*m_state.files, m_state.request);
    if (marked.isEmpty())
        return true;
    const bool assigned = AssignTargets();
    for (const auto& file : marked)
        file->SetFlag(FileMapping::RenameOnCollision, false);
    // What was up to date at its old place is not at the new one.
    for (const auto& file : m_state.files->GetFiles())
        file->SetFlag(FileMapping::Copied, false);
    if (!assigned || !MarkCollisions())
        return false;
    for (const auto& file : m_state.files->GetFiles())
        if (!QFileInfo::exists(m_state.wantedTargets.value(file.get())))
            m_state.wantedTargets.insert(file.get(), file->GetTargetFile());
    return true;
}

bool JobRun::MayBegin()
{
    m_state.cancelled = m_control->IsCancelRequested();
    return !m_state.cancelled;
}

void JobRun::Execute(ResultStream& stream)
{
    m_database->AllowWrites();
    m_state.executed = true;
    m_stream = &stream;
    if (CopyAndRepath()) {
        IncludeRepathedInPlace();
        Run(Phase::Recording, 0, [&] { m_importer->UpdateSyncDatabase(); });
    } else {
        RecordInterruptedRepath();
    }
    m_stream = nullptr;
}

bool JobRun::CopyAndRepath()
{
    return Run(Phase::Copying, CountFilesToCopy(), [&] { m_importer->CopyFiles(); }) &&
           Run(Phase::RewritingLinks, 0, [&] { m_importer->RepathTargetFiles(); });
}

void JobRun::Finish()
{
    m_importer.reset();
}

qint64 JobRun::CountFilesToCopy() const
{
    const FileMapping::FileMappingFlag notCopied =
        FileMapping::Folder | FileMapping::Unchanged | FileMapping::NoCopy |
        FileMapping::NotFilePath | FileMapping::SourceMissing | FileMapping::SameSourceAndTarget;
    const auto files = m_state.files->GetFiles();
    return std::count_if(files.begin(), files.end(),
                         [&](const auto& file) { return !file->HasFlagAny(notCopied); });
}

/// The module records what was copied. A file that stays where it is, but whose links were
/// rewritten because a file that it links got a new place, has new links as well; and when it was
/// locked, only its record can tell that they are still to be rewritten.
void JobRun::IncludeRepathedInPlace()
{
    const auto inPlace =
        FileMapping::NoCopy | FileMapping::Unchanged | FileMapping::SameSourceAndTarget;
    for (const auto& file : m_state.files->GetFiles())
        if (file->HasFlagAny(inPlace) && file->ExistsInTarget() &&
            file->HasFlagAny(FileMapping::NeedsRepath | FileMapping::Repathed))
            file->SetFlag(FileMapping::Copied, true);
}

/// A cancel may fall between the rewriting of a file and the module's note of the file's new date.
/// Without that note the next import would take the copy for one that somebody else changed.
void JobRun::RecordInterruptedRepath()
{
    for (const auto& file : m_state.files->GetFiles())
        if (m_state.modified.contains(file->GetTargetFile()) &&
            !file->HasFlag(FileMapping::Repathed))
            file->UpdateTargetFileProperties();
}

} // namespace Halvern::Jobs
