// SPDX-License-Identifier: Apache-2.0

#include "filelink/FileLinkManager.h"

#include "fileset/FileCopyHistory.h"
#include "plugins/PluginManager.h"
#include "support/Platform.h"
#include "syncservices/FolderManager.h"
#include "syncservices/SyncManager.h"

namespace Halvern::FileLink {

using SyncServices::SyncManager;

struct FileLinkManager::Holder
{
    std::unique_ptr<PluginManager> plugins = std::make_unique<PluginManager>();
};

/// The process's one file link manager and how often it was asked for.
class ManagerAccess
{
public:
    static void Create() { s_instance = new FileLinkManager; }
    static void Destroy()
    {
        s_instance->m_holder->plugins.reset();
        s_instance->m_holder.reset();
        delete s_instance;
        s_instance = nullptr;
    }
    static FileLinkManager* Instance() { return s_instance; }
    static PluginManager* Plugins()
    {
        return s_instance ? s_instance->m_holder->plugins.get() : nullptr;
    }

    static inline int s_count = 0;

private:
    static inline FileLinkManager* s_instance = nullptr;
};

PluginManager* GetPluginManager()
{
    return ManagerAccess::Plugins();
}

FileLinkManager::FileLinkManager() : m_holder(std::make_unique<Holder>()) {}

FileLinkManager::~FileLinkManager() = default;

void FileLinkManager::Initialize()
{
    if (ManagerAccess::s_count++ > 0)
        return;
    FolderManager::Initialize();
    SyncManager::Initialize();
    ManagerAccess::Create();
}

void FileLinkManager::Uninitialize()
{
    if (ManagerAccess::s_count <= 0 || --ManagerAccess::s_count > 0)
        return;
    ManagerAccess::Destroy();
    SyncManager::Uninitialize();
    FolderManager::Uninitialize();
    ManagerAccess::s_count = 0;
}

FileLinkManager* FileLinkManager::GetInstance()
{
    return ManagerAccess::Instance();
}

void FileLinkManager::AddPluginSearchPaths(const QStringList& paths)
{
    m_holder->plugins->AddPluginSearchPaths(paths);
}

void FileLinkManager::AddPluginRegistrationFolders(const QStringList& folders)
{
    m_holder->plugins->AddRegistrationFolders(folders);
}

QList<PluginDescription> FileLinkManager::GetPlugins()
{
    m_holder->plugins->EnsureRegistered();
    QList<PluginDescription> descriptions;
    for (const Plugin* plugin : m_holder->plugins->Plugins())
        descriptions.append({plugin->GetName(), plugin->GetModule(),
                             GetPluginTypeName(plugin->GetType()), plugin->GetFileTypes(),
                             plugin->GetPriority(), plugin->GetRegistration().file});
    return descriptions;
}

QList<Problem> FileLinkManager::GetRegistrationProblems()
{
    m_holder->plugins->EnsureRegistered();
    return m_holder->plugins->RegistrationProblems();
}

QStringList FileLinkManager::GetCompleteRegistrationFiles()
{
    m_holder->plugins->EnsureRegistered();
    return m_holder->plugins->CompleteRegistrationFiles();
}

bool FileLinkManager::LoadPlugin(const QString& module, QString* error)
{
    m_holder->plugins->EnsureRegistered();
    QString reason;
    if (Plugin* plugin = m_holder->plugins->FindPluginByModule(module)) {
        if (plugin->TryService())
            return true;
        reason = plugin->GetLastError();
    } else {
        reason = QStringLiteral("Plugin %1 is not registered").arg(module);
    }
    if (error)
        *error = reason;
    return false;
}

bool FileLinkManager::UnloadAllPlugins()
{
    return m_holder->plugins->UnloadAllPlugins();
}

bool FileLinkManager::DeleteFileCopyHistory()
{
    return FileCopyHistory::DeleteAll();
}

} // namespace Halvern::FileLink
