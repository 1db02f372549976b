// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"

#include <QtCore/QStringList>

namespace Halvern::SyncServices {

/// Facts about the signed-in user, from FolderManager's settings. Safe to call from any thread
/// between FolderManager::Initialize and Uninitialize.
class SYNCSERVICES_EXPORT SyncPrivate
{
public:
    /// Id of the user's authentication configuration; -1 while the services are not initialised.
    static int GetCurrentUserAuthenticationConfigurationId();
    /// File types whose links are handled; empty means all, and comes also while the services are
    /// not initialised.
    static QStringList GetSupportedFileTypesForFileLinks();
};

} // namespace Halvern::SyncServices
