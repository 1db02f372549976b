// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/FileMapping.h"
#include "syncservices/FolderManager.h"
#include "syncservices/Global.h"
#include "syncservices/SyncDatabase.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <memory>

namespace Halvern::FileLink {

using SyncFolderManagerLib::FolderManager;
using SyncServices::FileItem;
using SyncServices::FileMapping;
using SyncServices::Global;
using SyncServices::SyncDatabase;
using SyncServices::SyncItem;
using FileMappingFlag = FileMapping::FileMappingFlag;
using FileMappingPointer = std::shared_ptr<FileMapping>;
using FileMappingList = QList<FileMappingPointer>;
using FileLinkList = QList<SyncServices::FileLink>;

// What the module asks of the platform, answered with nothing while the services are not running
// or could not open their database.

QString CloudCacheFolder();
/// The form of a cloud cache folder path that stages store.
QString ConvertCloudCacheFolderPath(const QString& path);
/// May be null.
std::shared_ptr<SyncDatabase> GetDatabase();
int GetAuthenticationId();

} // namespace Halvern::FileLink
