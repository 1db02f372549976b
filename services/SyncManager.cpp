// SPDX-License-Identifier: Apache-2.0

#include "syncservices/SyncManager.h"

#include "services/BaseStore.h"
#include "syncservices/FolderManager.h"

namespace Halvern::SyncServices {

using SyncFolderManagerLib::FolderManager;

namespace {

SyncManager* instance = nullptr;

QString BaseStoreFolder(const ServicesSettings& settings)
{
    if (!settings.baseStoreFolder.isEmpty())
        return settings.baseStoreFolder;
    if (settings.databaseFile.isEmpty() || settings.databaseFile == u":memory:")
        return {};
    return settings.databaseFile + QStringLiteral(".base");
}

} // namespace

struct SyncManager::State
{
    explicit State(const ServicesSettings& settings)
        : syncEnabled(settings.cloudCacheFolderSyncEnabled),
          baseStore(BaseStoreFolder(settings), settings.baseStoreLimit)
    {}

    bool syncEnabled;
    BaseStore baseStore;
};

SyncManager::SyncManager() = default;

SyncManager::~SyncManager() = default;

void SyncManager::Initialize()
{
    if (instance != nullptr)
        return;
    instance = new SyncManager;
    if (const FolderManager* manager = FolderManager::GetInstance())
        instance->m_state = std::make_unique<State>(manager->GetSettings());
}

void SyncManager::Uninitialize()
{
    delete instance;
    instance = nullptr;
}

SyncManager* SyncManager::GetInstance()
{
    return instance;
}

bool SyncManager::IsCloudCacheFolderSyncEnabled() const
{
    return m_state && m_state->syncEnabled;
}

bool SyncManager::SaveBaseFile(const wchar_t* path)
{
    return m_state && path != nullptr && m_state->baseStore.Save(QString::fromWCharArray(path));
}

} // namespace Halvern::SyncServices
