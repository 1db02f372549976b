// SPDX-License-Identifier: Apache-2.0

#include "services/Paths.h"

#include "services/Platform.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <utility>

namespace Halvern::SyncServices {

bool IsUrlLike(const QString& path)
{
    return !path.startsWith(u'/') && path.indexOf(u':') >= 2;
}

QString PathKey(const QString& path)
{
    return QDir::cleanPath(path).toCaseFolded();
}

std::optional<QString> PathBelow(const QString& folder, const QString& path)
{
    if (folder.isEmpty() || !path.startsWith(folder, Qt::CaseInsensitive))
        return std::nullopt;
    if (path.size() == folder.size())
        return QString();
    if (folder.endsWith(u'/'))
        return path.mid(folder.size());
    if (path.at(folder.size()) != u'/')
        return std::nullopt;
    return path.mid(folder.size() + 1);
}

QString JoinPath(const QString& folder, const QString& below)
{
    if (below.isEmpty())
        return folder;
    return folder.endsWith(u'/') ? folder + below : folder + u'/' + below;
}

QString ParentPath(const QString& path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    if (slash < 0 || path.size() == 1 || (slash == 1 && path.startsWith(u'/')))
        return {};
    if (slash == 0)
        return QStringLiteral("/");
    // The root of a drive keeps its slash: C:/a lies in C:/.
    const QString parent = path.left(path.at(slash - 1) == u':' ? slash + 1 : slash);
    return parent == path ? QString() : parent;
}

QString PathFault(const ServicesSettings& settings)
{
    const std::pair<const char*, const QString&> paths[] = {
        {"cloudCacheFolder", settings.cloudCacheFolder},
        {"databaseFile", settings.databaseFile},
        {"baseStoreFolder", settings.baseStoreFolder},
        {"serviceFolder", settings.serviceFolder}};
    for (const auto& [key, path] : paths) {
        if (Platform::IsDriveRelative(path))
            return QStringLiteral("The path of %1 is not absolute: %2. In a settings file write / "
                                  "or \\\\ between folders, since a single \\ is lost.")
                .arg(QString::fromLatin1(key), path);
    }
    return {};
}

QString CanonicalPath(const QString& cleanedPath)
{
    QString below;
    for (QString existing = cleanedPath; !existing.isEmpty(); existing = ParentPath(existing)) {
        const QString canonical = QFileInfo(existing).canonicalFilePath();
        if (!canonical.isEmpty())
            return JoinPath(canonical, below);
        const QString name = existing.mid(existing.lastIndexOf(u'/') + 1);
        below = below.isEmpty() ? name : name + u'/' + below;
    }
    return cleanedPath;
}

} // namespace Halvern::SyncServices
