// SPDX-License-Identifier: Apache-2.0

#include "syncservices/SyncPrivate.h"

#include "syncservices/FolderManager.h"

namespace Halvern::SyncServices {

using SyncFolderManagerLib::FolderManager;

int SyncPrivate::GetCurrentUserAuthenticationConfigurationId()
{
    const FolderManager* manager = FolderManager::GetInstance();
    return manager == nullptr ? -1 : manager->GetSettings().authenticationConfigurationId;
}

QStringList SyncPrivate::GetSupportedFileTypesForFileLinks()
{
    const FolderManager* manager = FolderManager::GetInstance();
    return manager == nullptr ? QStringList() : manager->GetSettings().supportedFileTypes;
}

} // namespace Halvern::SyncServices
