#include "Session.h"

#include "ExitCode.h"
#include "Paths.h"
#include "Platform.h"

#include "filelink/FileLinkManager.h"
#include "syncservices/FolderManager.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Halvern::Host {

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

QString StartError()
{
    const FolderManager* folders = FolderManager::GetInstance();
    if (!folders)
        return QStringLiteral("the services did not start");
    if (folders->GetSyncDatabase())
        return folders->GetLastError();
    return QStringLiteral("the sync database could not be opened: ") + folders->GetLastError();
}

} // namespace

Session::Session(const SyncServices::ServicesSettings& settings, const QStringList& pluginPaths)
{
    const QStringList folders = CheckedFolders(pluginPaths);
    FolderManager::Configure(settings);
    FileLinkManager::Initialize();
    const QString error = StartError();
    if (!error.isEmpty()) {
        FileLinkManager::Uninitialize();
        throw CommandError(ExitCode::PluginOrDatabase, error);
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

} // namespace Halvern::Host
