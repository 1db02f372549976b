// SPDX-License-Identifier: Apache-2.0

#include "importer/PlatformServices.h"

#include "plugins/PluginManager.h"

#include "syncservices/ServicesSettings.h"
#include "syncservices/SyncManager.h"
#include "syncservices/SyncPrivate.h"

#include <utility>

namespace Halvern::FileLink {

using SyncServices::SyncManager;

void PlatformServices::SetDatabase(std::shared_ptr<SyncDatabase> database)
{
    m_database = std::move(database);
}

QString PlatformServices::CloudCacheFolder() const
{
    return FileLink::CloudCacheFolder();
}

bool PlatformServices::IsInCloudCacheFolder(const QString& path) const
{
    const FolderManager* const manager = FolderManager::GetInstance();
    return manager && manager->IsCloudCacheFolderPath(path);
}

QString PlatformServices::ConvertCloudCacheFolderPath(const QString& path) const
{
    return FileLink::ConvertCloudCacheFolderPath(path);
}

QString PlatformServices::CloudPath(const QString& path) const
{
    QString cloudPath;
    if (const FolderManager* const manager = FolderManager::GetInstance()) {
        // Always has one: only targets in the cloud cache folder are asked for.
        static_cast<void>(manager->GetCloudPath(path, false, cloudPath));
    }
    return cloudPath;
}

int PlatformServices::AuthenticationId() const
{
    return GetAuthenticationId();
}

std::shared_ptr<SyncDatabase> PlatformServices::Database() const
{
    return m_database ? m_database : GetDatabase();
}

std::shared_ptr<SyncItem> PlatformServices::RootItem(const QString& folder) const
{
    FolderManager* const manager = FolderManager::GetInstance();
    if (!manager)
        return nullptr;
    if (!m_database)
        return manager->GetSyncRootFolder(folder);
    // Another database has another item for the same folder.
    if (!manager->IsCloudCacheFolderPath(folder))
        return nullptr;
    const SyncServices::ServicesSettings& settings = manager->GetSettings();
    const std::shared_ptr<SyncItem> item =
        m_database->AddRootFolder(folder, settings.cloudRoot, AuthenticationId());
    if (!item || (item->GetProductConfigurationId() == settings.productConfigurationId &&
                  item->GetSourceConsumerId() == settings.sourceConsumerId))
        return item;
    item->SetProductConfigurationId(settings.productConfigurationId);
    item->SetSourceConsumerId(settings.sourceConsumerId);
    return m_database->AddOrUpdateFileConfiguration(item) ? item : nullptr;
}

PluginManager* PlatformServices::Plugins() const
{
    return GetPluginManager();
}

void PlatformServices::SaveBaseFile(const QString& path) const
{
    if (SyncManager* const manager = SyncManager::GetInstance())
        manager->SaveBaseFile(path.toStdWString().c_str());
}

bool PlatformServices::IsLoggedIn()
{
    const FolderManager* const manager = FolderManager::GetInstance();
    return manager && manager->IsLoggedIn();
}

bool PlatformServices::IsSyncEnabled()
{
    const SyncManager* const manager = SyncManager::GetInstance();
    return manager && manager->IsCloudCacheFolderSyncEnabled();
}

QStringList PlatformServices::SupportedFileTypes()
{
    return SyncServices::SyncPrivate::GetSupportedFileTypesForFileLinks();
}

} // namespace Halvern::FileLink
