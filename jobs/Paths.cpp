// SPDX-License-Identifier: Apache-2.0

#include "Paths.h"

#include "base/FileStatus.h"
#include "base/NativePath.h"
#include "base/PathText.h"
#include "base/SamePath.h"
#include "base/Units.h"
#include "syncservices/FileMapping.h"
#include "syncservices/FolderManager.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

using SyncFolderManagerLib::FolderManager;

QString AbsolutePath(const QString& argument)
{
    if (argument.isEmpty())
        return {};
    const QString path = QDir::current().absoluteFilePath(QDir::fromNativeSeparators(argument));
    // What has a drive alone, or only begins with a slash, is absolute to QDir, but not to Windows.
    return QDir::cleanPath(QFileInfo(QDir::cleanPath(path)).absoluteFilePath());
}

QString PathKey(const QString& path)
{
    return QStringView(Base::SamePathKey(Base::Units(path))).toString();
}

QString FoldedKey(const QString& path)
{
    return path.normalized(QString::NormalizationForm_KC).toCaseFolded();
}

std::filesystem::path Native(const QString& path)
{
    return Base::NativePath(Base::Units(path));
}

bool IsSameFile(const QString& a, const QString& b)
{
    return Base::IsSameFile(Native(a), Native(b));
}

bool IsInCloudFolder(const QString& path)
{
    const QString cloud = FolderManager::GetInstance()->GetCloudCacheFolderPath(false);
    return PathKey(path + u'/').startsWith(PathKey(cloud + u'/')) ||
           PathKey(RealPath(path) + u'/').startsWith(PathKey(RealPath(cloud) + u'/'));
}

QString PlaceInCloudFolder(const QString& path)
{
    const QString cloud = FolderManager::GetInstance()->GetCloudCacheFolderPath(false);
    const auto isBelow = [](const QString& file, const QString& folder) {
        return PathKey(file + u'/').startsWith(PathKey(folder + u'/'));
    };
    const QString top = RealPath(cloud);
    const QFileInfo info(path);
    // A link that lies there is known by its own name, unless a folder on the way is one.
    const QString real = QDir(RealPath(info.path())).filePath(info.fileName());
    if (isBelow(real, top))
        return cloud + real.mid(top.size());
    const QString end = info.isSymbolicLink() ? RealPath(path) : QString();
    if (isBelow(end, top))
        return cloud + end.mid(top.size());
    return isBelow(path, cloud) ? path : QString();
}

QString RealPath(const QString& path)
{
    QString missing;
    for (QString above = path; above.size() > 1; above = QFileInfo(above).path()) {
        const QString real = QFileInfo(above).canonicalFilePath();
        if (!real.isEmpty())
            return QDir::cleanPath(real + missing);
        missing = u'/' + QFileInfo(above).fileName() + missing;
        if (QFileInfo(above).path() == above)
            break;
    }
    return path;
}

bool IsInFolder(const QString& path, const QString& folder)
{
    return Base::PathBelow(Base::Units(folder), Base::Units(path)).has_value();
}

bool ExistsOnDisk(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymbolicLink() || IsShortcut(path);
}

bool IsFolder(const QString& path)
{
    return QFileInfo(path).isDir() && !IsShortcut(path);
}

bool IsShortcut(const QString& path)
{
    // For Qt every name that ends so is one, also that of a file that does not exist.
    return QFileInfo(path).isShortcut() &&
           SyncServices::FileMapping(QString(), path, 0).ExistsInTarget();
}

bool IsLocalPath(const QString& path)
{
    // The colon in "//?/C:/x" ends no scheme.
    return Base::IsLocalPath(Base::Units(path)) || Base::NamesDevice(Base::Units(path));
}

QString ResolveLink(const QString& text, const QString& holder)
{
    const QString path = QDir::cleanPath(text);
    // Cleaning takes one of its slashes away from a URL.
    if (!IsLocalPath(path))
        return text;
    return Base::IsAbsolutePath(Base::Units(path))
               ? path
               : QDir::cleanPath(QFileInfo(holder).path() + u'/' + path);
}

bool GoesBackUp(const QString& text)
{
    return !FoldersOnTheWay(text, QStringLiteral("/a")).isEmpty();
}

QStringList FoldersOnTheWay(const QString& text, const QString& holder)
{
    QStringList folders;
    QString way;
    bool wentDown = false;
    for (const QString& part : QDir::fromNativeSeparators(text).split(u'/')) {
        if (part == u".." && wentDown)
            folders.append(ResolveLink(way, holder));
        wentDown = wentDown || (!part.isEmpty() && part != u"." && part != u"..");
        way += part + u'/';
    }
    return folders;
}

QString WayFrom(const QString& holder, const QString& file)
{
    return QDir::cleanPath(QDir(QFileInfo(holder).path()).relativeFilePath(file));
}

QString FreePath(const QString& path, const std::function<bool(const QString&)>& isTaken)
{
    int number = 2;
    return FreePath(path, number, isTaken);
}

QString FreePath(const QString& path, int& number,
                 const std::function<bool(const QString&)>& isTaken)
{
    const QFileInfo info(path);
    const QString suffix = info.suffix().isEmpty() ? QString() : u'.' + info.suffix();
    const QString base = info.path() + u'/' + info.completeBaseName();
    for (;; ++number) {
        const QString candidate = base + QStringLiteral(" (%1)").arg(number) + suffix;
        if (!isTaken(candidate))
            return candidate;
    }
}

} // namespace Halvern::Jobs
