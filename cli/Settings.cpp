// SPDX-License-Identifier: Apache-2.0

#include "Settings.h"

#include "Paths.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QFileInfo>

namespace Halvern::Cli {

using SyncServices::ServicesSettings;

namespace {

const QString InMemory = QStringLiteral(":memory:");

ServicesSettings StoredSettings(const ImportOptions& options)
{
    const bool given = !options.settings.isEmpty();
    if (!given && !options.cloudFolder.isEmpty() && !options.database.isEmpty())
        return ServicesSettings::Defaults();
    const QString file = given ? AbsolutePath(options.settings) : ServicesSettings::DefaultFile();
    if (options.dryRun && !QFileInfo::exists(file))
        return ServicesSettings::Defaults();
    QString error;
    const ServicesSettings settings = ServicesSettings::LoadOrCreate(file, &error);
    if (!error.isEmpty())
        throw CommandError(ExitCode::Usage, error);
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

ServicesSettings ImportSettings(const ImportOptions& options)
{
    ServicesSettings settings = StoredSettings(options);
    TakeCloudFolder(settings, AbsolutePath(options.cloudFolder));
    TakeDatabase(settings, options.database);
    if (IsInFolder(settings.databaseFile, settings.cloudCacheFolder))
        throw CommandError(ExitCode::Usage,
                           QStringLiteral("the database %1 must not lie in the cloud cache folder")
                               .arg(settings.databaseFile));
    if (options.dryRun && !QFileInfo::exists(settings.databaseFile))
        settings.databaseFile = InMemory;
    return settings;
}

ServicesSettings ThrowawaySettings(const QString& folder)
{
    ServicesSettings settings = ServicesSettings::Defaults();
    settings.cloudCacheFolder = folder;
    settings.databaseFile = InMemory;
    settings.baseStoreFolder.clear();
    settings.baseStoreLimit = 0;
    return settings;
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

} // namespace Halvern::Cli
