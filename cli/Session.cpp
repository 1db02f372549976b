// SPDX-License-Identifier: Apache-2.0

#include "Session.h"

#include "ExitCode.h"
#include "Paths.h"
#include "Platform.h"

#include "filelink/FileLinkManager.h"
#include "syncservices/FolderManager.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <optional>

namespace Halvern::Cli {

using FileLink::FileLinkManager;
using SyncFolderManagerLib::FolderManager;

namespace {

QStringList CheckedFolders(const QStringList& arguments)
{
    QStringList folders;
    for (const QString& argument : arguments) {
        const QString folder = AbsolutePath(argument);
        if (!QFileInfo(folder).isDir())
            throw CommandError(ExitCode::Usage,
                               QStringLiteral("no such plug-in folder: %1").arg(argument));
        folders.append(folder);
    }
    return folders;
}

/// Folders given to the module replace its default ones, so these are named as well.
void AddPluginFolders(const QStringList& folders)
{
    if (folders.isEmpty())
        return;
    FileLinkManager* manager = FileLinkManager::GetInstance();
    const QString program = QCoreApplication::applicationDirPath();
    manager->AddPluginRegistrationFolders(
        folders + QStringList{CommonDataFolder() + QStringLiteral("/Halvern/Halvern Sync/Plugins"),
                              program, program + QStringLiteral("/SyncPluginRegFiles")});
    manager->AddPluginSearchPaths(folders +
                                  QStringList{program, program + QStringLiteral("/SyncPlugins")});
}

/// Why the services did not start; nothing when they did.
std::optional<CommandError> StartError()
{
    const FolderManager* folders = FolderManager::GetInstance();
    if (folders->GetSyncDatabase())
        return {};
    // Without a cloud cache folder the database was not even tried.
    const bool noFolder = folders->GetCloudCacheFolderPath(false).isEmpty();
    return CommandError(noFolder ? ExitCode::Failed : ExitCode::PluginOrDatabase,
                        folders->GetLastError());
}

} // namespace

Session::Session(const SyncServices::ServicesSettings& settings, const QStringList& pluginPaths)
{
    const QStringList folders = CheckedFolders(pluginPaths);
    FolderManager::Configure(settings);
    FileLinkManager::Initialize();
    if (const std::optional<CommandError> error = StartError()) {
        FileLinkManager::Uninitialize();
        throw CommandError(*error);
    }
    AddPluginFolders(folders);
}

Session::~Session()
{
    FileLinkManager::Uninitialize();
}

FolderCleanup::FolderCleanup(const QString& path)
{
    for (QString folder = path; !folder.isEmpty() && !QFileInfo::exists(folder);
         folder = QFileInfo(folder).path())
        m_missing.append(folder);
}

FolderCleanup::~FolderCleanup()
{
    for (const QString& folder : std::as_const(m_missing))
        QDir().rmdir(folder);
}

} // namespace Halvern::Cli
