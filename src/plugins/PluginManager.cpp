// SPDX-License-Identifier: Apache-2.0

#include "plugins/PluginManager.h"

#include "plugins/RegistrationCheck.h"
#include "support/Logging.h"
#include "support/PathUtilities.h"

#include "base/Directory.h"
#include "base/NativePath.h"
#include "base/Units.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "PluginManager.cpp";

void AddFolder(QStringList& folders, const QString& folder)
{
    const QString path = QDir::cleanPath(folder);
    if (!folders.contains(path, Qt::CaseInsensitive))
        folders.append(path);
}

/// A success also when nothing is there.
Base::FileResult TryToSee(const QString& folder)
{
    return Base::ReadEntry(Base::NativePath(Base::Units(folder))).reason;
}

Base::FileResult TryToList(const QString& folder)
{
    // Through symbolic links.
    const QString path = QFileInfo(folder).canonicalFilePath();
    return Base::VisitEntries(Base::NativePath(Base::Units(path)),
                              [](Base::FolderEntry&&) { return false; });
}

} // namespace

PluginManager::PluginManager() = default;

PluginManager::~PluginManager()
{
    m_lookupCache.clear();
    qDeleteAll(m_plugins);
}

void PluginManager::AddPluginSearchPaths(const QStringList& paths)
{
    for (const QString& path : paths)
        AddFolder(m_searchPaths, path);
}

void PluginManager::AddRegistrationFolders(const QStringList& folders)
{
    for (const QString& folder : folders)
        AddFolder(m_registrationFolders, folder);
}

void PluginManager::AddDefaultFolders()
{
    const QString application = GetApplicationFolder();
    if (m_registrationFolders.isEmpty()) {
        AddRegistrationFolders(
            {QStringLiteral("%1/Halvern/Halvern Sync/Plugins").arg(GetCommonAppDataFolder()),
             application, QStringLiteral("%1/SyncPluginRegFiles").arg(application)});
    }
    if (m_searchPaths.isEmpty())
        AddPluginSearchPaths({application, QStringLiteral("%1/SyncPlugins").arg(application)});
}

int PluginManager::RegisterPlugins()
{
    AddDefaultFolders();
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Searching for plugin registration files in %1")
                                     .arg(m_registrationFolders.join(u';')));
    for (const QString& folder : std::as_const(m_registrationFolders)) {
        if (!MayBeSearched(folder))
            continue;
        const QStringList files =
            ListFilesRecursive(folder, QStringLiteral("*.syncplugin"), QDir::Files, false);
        for (const QString& file : files) {
            if (LoadRegistrationFile(file))
                FILELINK_LOG(
                    LogLevel::Info,
                    QStringLiteral("Found plugin registration file %1 and loaded").arg(file));
            else
                FILELINK_LOG(LogLevel::Error,
                             QStringLiteral("Found plugin registration file %1, but failed to load")
                                 .arg(file));
        }
    }
    m_registered = true;
    return int(m_plugins.size());
}

/// A folder that is not there is none to search. One that cannot be looked at may hold plug-ins.
bool PluginManager::MayBeSearched(const QString& folder)
{
    const bool isFolder = QFileInfo(folder).isDir();
    const Base::FileResult result = isFolder ? TryToList(folder) : TryToSee(folder);
    if (!result)
        m_registrationProblems.append(MakeRegistrationProblem(
            folder, {},
            QStringLiteral("The folder cannot be searched for registration files: %1")
                .arg(QString::fromStdString(result.Text()))));
    return isFolder && result;
}

void PluginManager::EnsureRegistered()
{
    if (!m_registered)
        RegisterPlugins();
}

bool PluginManager::UnloadAllPlugins()
{
    bool unloaded = true;
    for (Plugin* plugin : std::as_const(m_plugins))
        unloaded = plugin->UnloadModule() && unloaded;
    return unloaded;
}

} // namespace Halvern::FileLink
