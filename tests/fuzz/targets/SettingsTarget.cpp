// SPDX-License-Identifier: Apache-2.0

#include "Scratch.h"
#include "Target.h"

#include "syncservices/ServicesSettings.h"

#include <QtCore/QFile>

namespace Halvern::Fuzz {

namespace {

using SyncServices::ServicesSettings;

bool IsSame(const ServicesSettings& a, const ServicesSettings& b)
{
    return a.cloudCacheFolder == b.cloudCacheFolder && a.databaseFile == b.databaseFile &&
           a.databaseBusyTimeout == b.databaseBusyTimeout &&
           a.baseStoreFolder == b.baseStoreFolder && a.baseStoreLimit == b.baseStoreLimit &&
           a.userName == b.userName &&
           a.authenticationConfigurationId == b.authenticationConfigurationId &&
           a.productConfigurationId == b.productConfigurationId &&
           a.sourceConsumerId == b.sourceConsumerId && a.loggedIn == b.loggedIn &&
           a.cloudCacheFolderSyncEnabled == b.cloudCacheFolderSyncEnabled &&
           a.supportedFileTypes == b.supportedFileTypes && a.allowedFolders == b.allowedFolders &&
           a.isolatePlugins == b.isolatePlugins && a.pluginTimeLimit == b.pluginTimeLimit &&
           a.pluginMemoryLimit == b.pluginMemoryLimit && a.serviceFolder == b.serviceFolder &&
           a.cloudRoot == b.cloudRoot;
}

/// Qt remembers what a file of a name held a moment ago.
QString FreshFile()
{
    static int number = 0;
    const std::string name = "settings" + std::to_string(++number) + ".ini";
    return QString::fromStdString((ScratchFolder() / name).string());
}

/// What is read, written and read again is the same.
void Try(std::string_view input)
{
    const QString file = FreshFile();
    WriteFile(file.toStdString(), input);
    QString error;
    const ServicesSettings settings = ServicesSettings::LoadOrCreate(file, &error);
    Require(ReadFile(file.toStdString()) == input, "reading wrote the file");
    QFile::remove(file);
    if (!error.isEmpty())
        return Require(IsSame(settings, ServicesSettings::Defaults()), "refused, and half read");
    const QString copy = FreshFile();
    const bool isSaved = settings.Save(copy, &error);
    Require(isSaved, "settings cannot be written");
    const ServicesSettings again = ServicesSettings::LoadOrCreate(copy, &error);
    QFile::remove(copy);
    Require(error.isEmpty() && IsSame(settings, again), "settings do not come back");
}

const RegisteredTarget Registered("settings", Try);

} // namespace

} // namespace Halvern::Fuzz
