// SPDX-License-Identifier: Apache-2.0

#include "corsync/Settings.h"

#include "Paths.h"

#include "corsync/JobError.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>

namespace Halvern::Jobs {

using SyncServices::ServicesSettings;

namespace {

const QString InMemory = QStringLiteral(":memory:");

ServicesSettings StoredSettings(const Places& places, SessionUse use)
{
    const bool given = !places.settingsFile.isEmpty();
    if (!given && !places.cloudFolder.isEmpty() && !places.database.isEmpty())
        return ServicesSettings::Defaults();
    const QString file =
        given ? AbsolutePath(places.settingsFile) : ServicesSettings::DefaultFile();
    if (use == SessionUse::PlanOnly && !QFileInfo::exists(file))
        return ServicesSettings::Defaults();
    QString error;
    const ServicesSettings settings = ServicesSettings::LoadOrCreate(file, &error);
    if (!error.isEmpty())
        throw JobError(JobErrorKind::SettingsRefused, error);
    return settings;
}

void TakeCloudFolder(ServicesSettings& settings, const QString& cloudFolder)
{
    if (cloudFolder.isEmpty() || PathKey(cloudFolder) == PathKey(settings.cloudCacheFolder))
        return;
    settings.cloudCacheFolder = cloudFolder;
    settings.databaseFile = DatabaseForCloudFolder(cloudFolder);
    settings.baseStoreFolder.clear();
}

void TakeDatabase(ServicesSettings& settings, const QString& database)
{
    if (database.isEmpty())
        return;
    settings.databaseFile = database == InMemory ? database : AbsolutePath(database);
    settings.baseStoreFolder.clear();
}

} // namespace

ServicesSettings ResolveSettings(const Places& places, SessionUse use)
{
    ServicesSettings settings = StoredSettings(places, use);
    TakeCloudFolder(settings, AbsolutePath(places.cloudFolder));
    TakeDatabase(settings, places.database);
    if (IsInFolder(settings.databaseFile, settings.cloudCacheFolder))
        throw JobError(JobErrorKind::SettingsRefused,
                       QStringLiteral("the database %1 must not lie in the cloud cache folder")
                           .arg(settings.databaseFile));
    return settings;
}

PluginOptions PluginOptionsOf(const ServicesSettings& settings)
{
    const QHash<QString, PluginIsolationMode> modes{
        {QStringLiteral("auto"), PluginIsolationMode::Auto},
        {QStringLiteral("always"), PluginIsolationMode::Always},
        {QStringLiteral("never"), PluginIsolationMode::Never}};
    const auto mode = modes.constFind(settings.isolatePlugins);
    if (mode == modes.constEnd())
        throw JobError(JobErrorKind::SettingsRefused,
                       QStringLiteral("isolatePlugins must be auto, always or never, not %1")
                           .arg(settings.isolatePlugins));
    return {*mode, settings.pluginTimeLimit, settings.pluginMemoryLimit};
}

QString DatabaseForCloudFolder(const QString& cloudFolder)
{
    const QFileInfo usual(ServicesSettings::Defaults().databaseFile);
    const QByteArray hash =
        QCryptographicHash::hash(PathKey(cloudFolder).toUtf8(), QCryptographicHash::Sha1)
            .toHex()
            .left(12);
    return QStringLiteral("%1/folders/%2-%3.db")
        .arg(usual.absolutePath(), QFileInfo(cloudFolder).fileName(), QString::fromLatin1(hash));
}

} // namespace Halvern::Jobs
