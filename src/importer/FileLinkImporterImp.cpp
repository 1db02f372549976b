// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"

#include "fileset/FileSetImp.h"
#include "support/Problems.h"

#include <QtCore/QDir>

#include <utility>

namespace Halvern::FileLink {

namespace {
constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";
}

FileLinkImporterImp::FileLinkImporterImp(std::shared_ptr<ICancelController> controller)
    : m_cancelController(std::move(controller)), m_copyHistory(std::make_unique<FileCopyHistory>())
{}

FileLinkImporterImp::~FileLinkImporterImp()
{
    // Nothing that a database or a sink throws may leave a destructor.
    try {
        if (!m_copyHistory->Save())
            Report(Stage::UpdateSyncDatabase, ProblemKind::NotRecorded, QString(),
                   QStringLiteral("What was copied could not be remembered"));
    } catch (...) {
        FILELINK_LOG(LogLevel::Error, QStringLiteral("Failed to save the copy history"));
    }
}

void FileLinkImporterImp::SetCopyOption(CopyOption option, bool on)
{
    m_copyOptions = on ? m_copyOptions | option : m_copyOptions & ~option;
}

bool FileLinkImporterImp::CheckIfCanceled() const
{
    if (!m_cancelController || !m_cancelController->IsCancelRequested())
        return false;
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Operation canceled"));
    return true;
}

void FileLinkImporterImp::SetProblemSink(std::shared_ptr<IProblemSink> sink)
{
    m_problems = std::move(sink);
}

void FileLinkImporterImp::SetSyncDatabase(std::shared_ptr<SyncDatabase> database)
{
    m_database = std::move(database);
    m_copyHistory->SetDatabase(m_database);
}

std::shared_ptr<SyncDatabase> FileLinkImporterImp::Database() const
{
    return m_database ? m_database : GetDatabase();
}

/// Another database has another item for the same folder.
std::shared_ptr<SyncItem> FileLinkImporterImp::RootItem() const
{
    FolderManager* const manager = FolderManager::GetInstance();
    if (!manager)
        return nullptr;
    const QString root = m_fileSet->GetTargetRootFolder();
    if (!m_database)
        return manager->GetSyncRootFolder(root);
    if (!manager->IsCloudCacheFolderPath(root))
        return nullptr;
    return m_database->AddRootFolder(root, manager->GetSettings().cloudRoot, GetAuthenticationId());
}

void FileLinkImporterImp::Report(Stage stage, ProblemKind kind, const QString& file,
                                 const QString& text) const
{
    ReportProblem(m_problems.get(), {stage, kind, file, text, {}});
}

bool FileLinkImporterImp::HasFilesWhichSupportFileLinks() const
{
    return m_fileSet && m_fileSet->HasFilesWhichSupportFileLinks();
}

FileMappingList FileLinkImporterImp::Files() const
{
    return m_fileSet ? m_fileSet->GetFiles() : FileMappingList();
}

QList<FileLinkImporterImp::NodePointer> FileLinkImporterImp::Hierarchy(bool useSourceLinks) const
{
    const FileSetImp* const set = FileSetImp::Of(m_fileSet.get());
    return set ? set->GetFileLinkHierarchy(useSourceLinks) : QList<NodePointer>();
}

bool FileLinkImporterImp::HasOption(CopyOption option) const
{
    return (m_copyOptions & option) == option;
}

FileLinkImporterImp::SourceList::SourceList(FileMappingList list) : files(std::move(list))
{
    for (int i = 0; i < files.size(); ++i)
        index.Add(files[i]->GetSourceFile(), i);
}

FileMappingPointer FileLinkImporterImp::SourceList::Find(const QString& path) const
{
    const int found = index.Find(QDir::cleanPath(path));
    return found < 0 ? nullptr : files[found];
}

} // namespace Halvern::FileLink
