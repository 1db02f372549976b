// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"

#include "importer/FileLinkExtractorImp.h"
#include "importer/PlatformServices.h"
#include "stages/CollisionMarking.h"
#include "stages/CollisionResolution.h"
#include "stages/Copying.h"
#include "stages/DatabaseUpdate.h"
#include "stages/DeferredRepathing.h"
#include "stages/FileLinkExtraction.h"
#include "stages/FileReplacement.h"
#include "stages/Repathing.h"
#include "stages/SelectionIntake.h"
#include "stages/TargetAssignment.h"
#include "stages/TargetLinks.h"

#include <utility>

namespace Halvern::FileLink {

namespace {
constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";
}

FileLinkImporterImp::FileLinkImporterImp(std::shared_ptr<ICancelController> controller)
    : m_copyHistory(std::make_unique<FileCopyHistory>()),
      m_services(std::make_shared<PlatformServices>())
{
    m_context.cancelController = std::move(controller);
    m_context.history = m_copyHistory.get();
    m_context.services = m_services;
    m_context.signals.folderCreated = [this](const QString& folder) {
        Q_EMIT FolderCreated(folder);
    };
    m_context.signals.fileCopied = [this](const QString& source, const QString& target) {
        Q_EMIT FileCopied(source, target);
    };
    m_context.signals.fileMoved = [this](const QString& source, const QString& target) {
        Q_EMIT FileMoved(source, target);
    };
    m_context.signals.fileModified = [this](const QString& file) { Q_EMIT FileModified(file); };
}

FileLinkImporterImp::~FileLinkImporterImp()
{
    RunStage(m_context, Stage::UpdateSyncDatabase, FILELINK_FUNCTION, [this] {
        if (m_copyHistory->Save())
            return true;
        m_context.Report(Stage::UpdateSyncDatabase, ProblemKind::NotRecorded, QString(),
                         QStringLiteral("What was copied could not be remembered"));
        return false;
    });
}

void FileLinkImporterImp::SetProblemSink(std::shared_ptr<IProblemSink> sink)
{
    m_context.problems = std::move(sink);
}

void FileLinkImporterImp::SetSyncDatabase(std::shared_ptr<SyncDatabase> database)
{
    m_services->SetDatabase(database);
    m_copyHistory->SetDatabase(std::move(database));
}

void FileLinkImporterImp::SetCopyOption(CopyOption option, bool on)
{
    m_context.options = on ? m_context.options | option : m_context.options & ~option;
}

bool FileLinkImporterImp::CheckIfCanceled() const
{
    return m_context.IsCanceled();
}

bool FileLinkImporterImp::Initialize(const QStringList& sources, QString target, bool targetIsFile,
                                     CopyOption options, const QStringList& fileTypes)
{
    m_context.options = options;
    m_context.fileTypes = fileTypes;
    return Stages::TakeSelection(m_context, sources, target, targetIsFile);
}

bool FileLinkImporterImp::ExtractFileLinks()
{
    if (!m_context.HasFilesWhichSupportFileLinks()) {
        FILELINK_LOG(LogLevel::Info,
                     QStringLiteral("File link extraction skipped for the entire file set. File "
                                    "set doesn't have any file which supports file links."));
        return true;
    }
    FileLinkExtractorImp extractor(m_context);
    return extractor.ExtractFileLinks(m_context.fileSet.get(),
                                      !m_context.HasOption(Global::DirectLinksOnly),
                                      m_context.fileTypes);
}

bool FileLinkImporterImp::AssignTargetPaths()
{
    return Stages::AssignTargetPaths(m_context);
}

bool FileLinkImporterImp::MarkCollisions()
{
    return Stages::MarkCollisions(m_context);
}

bool FileLinkImporterImp::MarkCollisions(const FileMappingPointer& mapping)
{
    return Stages::MarkCollision(m_context, mapping);
}

bool FileLinkImporterImp::ResolveCollisions()
{
    return Stages::ResolveCollisions(m_context);
}

bool FileLinkImporterImp::AssignUniqueTargetName(const FileMappingPointer& mapping)
{
    return Stages::AssignUniqueTargetName(m_context, mapping);
}

bool FileLinkImporterImp::CopyFiles()
{
    return Stages::CopyFiles(m_context);
}

bool FileLinkImporterImp::CopyFile(const FileMappingPointer& mapping, bool deleteSource)
{
    return Stages::CopyFile(m_context, mapping, deleteSource);
}

bool FileLinkImporterImp::CreateFolder(const QString& path, bool hidden)
{
    return Stages::CreateFolder(m_context, path, hidden, path);
}

bool FileLinkImporterImp::ComputeTargetFileLinks()
{
    return RunStage(m_context, Stage::CopyFiles, FILELINK_FUNCTION,
                    [this] { return Stages::ComputeTargetFileLinks(m_context); });
}

bool FileLinkImporterImp::RepathFiles()
{
    return Stages::RepathFiles(m_context);
}

bool FileLinkImporterImp::RepathFile(const FileMappingPointer& mapping)
{
    return Stages::RepathMapping(m_context, mapping);
}

bool FileLinkImporterImp::RepathFile(const QString& path,
                                     const QList<SyncPlugin::FileLinkInfo>& links)
{
    return RunStage(m_context, Stage::RepathFiles, Operation::RepathFile,
                    [&] { return Stages::RepathFile(m_context, path, links); });
}

bool FileLinkImporterImp::RepathFile(const QString& path, const FileLinkList& links)
{
    return RunStage(m_context, Stage::RepathFiles, Operation::RepathFile,
                    [&] { return Stages::RepathFile(m_context, path, links); });
}

bool FileLinkImporterImp::RepathFiles(int folderId)
{
    return Stages::RepathFolder(m_context, folderId);
}

bool FileLinkImporterImp::RepathFiles(const QList<std::shared_ptr<SyncItem>>& items)
{
    return Stages::RepathPendingItems(m_context, items);
}

bool FileLinkImporterImp::ReadFileLinks(const QString& path, FileLinkList& links)
{
    return RunStage(m_context, Stage::ExtractFileLinks, Operation::ExtractLinksOfFile, [&] {
        return Stages::FileLinkExtraction(m_context).ReadStoredLinks(path, links);
    });
}

bool FileLinkImporterImp::UpdateSyncDatabase()
{
    return Stages::UpdateSyncDatabase(m_context);
}

} // namespace Halvern::FileLink
