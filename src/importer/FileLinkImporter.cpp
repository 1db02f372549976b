// SPDX-License-Identifier: Apache-2.0

#include "filelink/FileLinkImporter.h"

#include "importer/FileLinkImporterImp.h"

#include <utility>

namespace Halvern::FileLink {

FileLinkImporter::FileLinkImporter()
    : FileLinkImporter(std::shared_ptr<ICancelController>(static_cast<ICancelController*>(nullptr)))
{}

FileLinkImporter::FileLinkImporter(std::shared_ptr<ICancelController> controller)
    : m_imp(new FileLinkImporterImp(std::move(controller)))
{
    ConnectSignals();
}

FileLinkImporter::~FileLinkImporter()
{
    delete m_imp;
}

void FileLinkImporter::SetProblemSink(std::shared_ptr<IProblemSink> sink)
{
    m_imp->SetProblemSink(std::move(sink));
}

void FileLinkImporter::SetSyncDatabase(std::shared_ptr<SyncDatabase> database)
{
    m_imp->SetSyncDatabase(std::move(database));
}

void FileLinkImporter::ConnectSignals()
{
    connect(m_imp, SIGNAL(FolderCreated(QString)), this, SIGNAL(FolderCreated(QString)));
    connect(m_imp, SIGNAL(FileCopied(QString, QString)), this,
            SIGNAL(FileCopied(QString, QString)));
    connect(m_imp, SIGNAL(FileMoved(QString, QString)), this, SIGNAL(FileMoved(QString, QString)));
    connect(m_imp, SIGNAL(FileModified(QString)), this, SIGNAL(FileModified(QString)));
}

bool FileLinkImporter::Initialize(QStringList sources, QString target, bool targetIsFile,
                                  Global::CopyOption options, const QStringList& fileTypes)
{
    return m_imp->Initialize(sources, target, targetIsFile, options, fileTypes);
}

bool FileLinkImporter::CopyToCloudCacheFolder(QStringList sources, QString target, bool,
                                              Global::CopyOption options,
                                              const QStringList& fileTypes)
{
    return m_imp->CopyToCloudCacheFolder(sources, target, options, fileTypes);
}

bool FileLinkImporter::CopyFileLinksToCloudCacheFolder(const QString& sourceFile,
                                                       const QString& target,
                                                       Global::CopyOption options,
                                                       const QStringList& fileTypes)
{
    return m_imp->CopyFileLinksToCloudCacheFolder(sourceFile, target, options, fileTypes);
}

bool FileLinkImporter::ExtractAndImportFileLinksOfCloudFiles(
    int id, const QStringList& files, const QList<SyncItem::SyncOption>& options)
{
    return m_imp->ExtractAndImportFileLinksOfCloudFiles(id, files, options);
}

bool FileLinkImporter::ExtractFileLinks()
{
    return m_imp->ExtractFileLinks();
}

bool FileLinkImporter::AssignTargetPaths()
{
    return m_imp->AssignTargetPaths();
}

bool FileLinkImporter::MarkCollisions()
{
    return m_imp->MarkCollisions();
}

bool FileLinkImporter::ResolveCollisions()
{
    return m_imp->ResolveCollisions();
}

bool FileLinkImporter::CopyFiles()
{
    return m_imp->CopyFiles();
}

bool FileLinkImporter::ValidateTargetFileLinks()
{
    return true;
}

bool FileLinkImporter::RepathTargetFiles()
{
    return m_imp->RepathFiles();
}

bool FileLinkImporter::RepathFiles(int id)
{
    return m_imp->RepathFiles(id);
}

bool FileLinkImporter::RepathFile(const QString& file, const QList<SyncServices::FileLink>& links)
{
    return m_imp->RepathFile(file, links);
}

bool FileLinkImporter::ReadFileLinks(const QString& file, QList<SyncServices::FileLink>& links)
{
    return m_imp->ReadFileLinks(file, links);
}

bool FileLinkImporter::UpdateSyncDatabase()
{
    return m_imp->UpdateSyncDatabase();
}

std::shared_ptr<FileSet> FileLinkImporter::GetFileSet()
{
    return m_imp->GetFileSet();
}

Global::CopyOption FileLinkImporter::GetCopyOption() const
{
    return m_imp->GetCopyOption();
}

void FileLinkImporter::SetCopyOption(Global::CopyOption option, bool on)
{
    m_imp->SetCopyOption(option, on);
}

} // namespace Halvern::FileLink
