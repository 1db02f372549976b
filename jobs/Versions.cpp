// SPDX-License-Identifier: Apache-2.0

#include "corsync/Versions.h"

#include "Paths.h"
#include "RealPaths.h"
#include "VersionStore.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <optional>

namespace Halvern::Jobs {

using SyncServices::StoredVersion;
using SyncServices::SyncManager;

namespace {

/// The part of a path below a folder, by the rules of the system on letter case; nothing elsewhere.
std::optional<QString> Below(const QString& folder, const QString& path)
{
    const QString start = folder.endsWith(u'/') ? folder : folder + u'/';
    if (path.size() > start.size() && PathKey(path.left(start.size())) == PathKey(start))
        return path.mid(start.size());
    return std::nullopt;
}

/// A path into the cloud folder may come another way than the cloud folder's own.
std::optional<QString> BelowCloudFolder(const QString& cloud, const QString& path)
{
    if (const std::optional<QString> below = Below(cloud, path))
        return below;
    RealPaths real;
    return Below(real.OfFolder(cloud), real.OfFolder(FolderAbove(path)) + u'/' + NameOf(path));
}

} // namespace

QString VersionedFile(const Session& session, const QString& file)
{
    const QString cloud = session.CloudFolder();
    const QString path = AbsolutePath(file);
    if (const std::optional<QString> below = BelowCloudFolder(cloud, path))
        return cloud + u'/' + *below;
    const QString cleaned = QDir::cleanPath(QDir::fromNativeSeparators(file));
    const bool isBelow = !cleaned.isEmpty() && QDir::isRelativePath(cleaned) && cleaned != u"." &&
                         cleaned != u".." && !cleaned.startsWith(u"../");
    return isBelow ? QDir::cleanPath(cloud + u'/' + cleaned) : path;
}

QString PathBelowCloudFolder(const Session& session, const QString& file)
{
    return Below(session.CloudFolder(), file).value_or(QString());
}

QList<Version> ReadVersions(const QString& file)
{
    QList<Version> versions;
    for (const StoredVersion& stored : SyncManager::GetInstance()->GetVersions(file))
        versions.append({int(versions.size()) + 1, stored.saved, stored.bytes, stored.storeFile});
    return versions;
}

QList<Version> ListVersions(const Session& session, const QString& file)
{
    const QString path = VersionedFile(session, file);
    const QList<Version> versions = ReadVersions(path);
    if (versions.isEmpty() && !ExistsOnDisk(path))
        throw JobError(JobErrorKind::VersionMissing,
                       QStringLiteral("%1: no such file, and no old version of it")
                           .arg(QDir::toNativeSeparators(path)));
    return versions;
}

} // namespace Halvern::Jobs
