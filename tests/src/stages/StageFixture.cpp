// SPDX-License-Identifier: Apache-2.0

#include "StageFixture.h"

#include "ServicesFixture.h"
#include "TestPlugins.h"
#include "fileset/FileSetImp.h"

#include "syncservices/FolderManager.h"

namespace Halvern::Test {

using SyncFolderManagerLib::FolderManager;

TreeServices::TreeServices(const FileTree& tree) : m_folder(tree.Path("cloud")) {}

bool TreeServices::IsInCloudCacheFolder(const QString& path) const
{
    return path == m_folder || path.startsWith(m_folder + u'/');
}

QString TreeServices::CloudPath(const QString& path) const
{
    return IsInCloudCacheFolder(path) ? path.mid(m_folder.size()) : QString();
}

std::shared_ptr<SyncServices::SyncItem> TreeServices::RootItem(const QString& folder) const
{
    return database ? database->AddRootFolder(folder, "/", AuthenticationId()) : nullptr;
}

StageFixture::StageFixture()
{
    tree.Folder("src").Folder("cloud");
    services = std::make_shared<TreeServices>(tree);
    RegisterTestResolver(tree, "plugins");
    services->plugins->AddRegistrationFolders({tree.Path("plugins")});
    services->plugins->AddPluginSearchPaths({TestPluginFolder()});
    context.history = &history;
    context.services = services;
    context.problems = problems;
    context.fileSet = std::make_shared<FileLink::FileSet>();
    FileLink::FileSetImp::Of(context.fileSet.get())->SetTargetRootFolder(tree.Path("cloud"));
}

StageFixture::FileMappingPointer StageFixture::Add(const QString& source, const QString& target,
                                                   FileMapping::FileMappingFlag flags)
{
    const auto mapping = std::make_shared<FileMapping>(
        Source(source), target.isEmpty() ? QString() : Cloud(target), 7);
    mapping->SetFlag(flags, true);
    context.fileSet->AddFile(mapping);
    return mapping;
}

void StageFixture::Link(const FileMappingPointer& holder, const QString& path)
{
    holder->SetSourceFileLinks({{-1, "1", path, {}}});
}

void StageFixture::OpenDatabase()
{
    FolderManager::Configure(SettingsFor(tree));
    FolderManager::Initialize();
    services->database = FolderManager::GetInstance()->GetSyncDatabase();
    FolderManager::Uninitialize();
    ASSERT_NE(services->database, nullptr);
}

} // namespace Halvern::Test
