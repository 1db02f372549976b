// SPDX-License-Identifier: Apache-2.0

#include "support/Platform.h"

#include "syncservices/SyncPrivate.h"

#include <QtCore/QDir>

namespace Halvern::FileLink {

QString CloudCacheFolder()
{
    const FolderManager* manager = FolderManager::GetInstance();
    return manager ? manager->GetCloudCacheFolderPath(false) : QString();
}

QString ConvertCloudCacheFolderPath(const QString& path)
{
    const FolderManager* manager = FolderManager::GetInstance();
    return manager ? manager->ConvertCloudCacheFolderPath(path, Global::LocalPath)
                   : QDir::cleanPath(path);
}

std::shared_ptr<SyncDatabase> GetDatabase()
{
    const FolderManager* manager = FolderManager::GetInstance();
    return manager ? manager->GetSyncDatabase() : nullptr;
}

int GetAuthenticationId()
{
    return SyncServices::SyncPrivate::GetCurrentUserAuthenticationConfigurationId();
}

} // namespace Halvern::FileLink
