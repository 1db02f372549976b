#include "support/PathUtilities.h"

#include "support/FileOperations.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <limits>

namespace Halvern::FileLink {

// Hosts pass these as numbers, and so does the selection intake.
static_assert(int(QDir::Dirs | QDir::Files | QDir::Hidden) == 0x103);
static_assert(int(QDir::NoSort) == -1);

namespace {

/// A folder met through a symbolic link that leads back to one of its own ancestors: descending
/// would not end.
bool LeadsBackToAncestor(const QFileInfo& folder)
{
    if (!folder.isSymLink())
        return false;
    const QString target = folder.canonicalFilePath();
    const QString parent = QFileInfo(folder.absolutePath()).canonicalFilePath();
    return parent == target || parent.startsWith(target + u'/');
}

void AppendFilesRecursive(const QString& path, const QString& nameFilter,
                          const QDir::Filters& filters, bool recursive, QStringList& result)
{
    const QFileInfo info(path);
    const QString folder = info.isDir() ? path : info.path();
    QString names = info.isDir() ? nameFilter : info.fileName();
    if (names.isEmpty())
        names = QStringLiteral("*");

    QDir::Filters entryFilters = filters.toInt() == 0 ? QDir::Filters(QDir::Files) : filters;
    const bool wantsFolders = filters.testAnyFlags(QDir::Dirs | QDir::AllDirs);
    entryFilters |= QDir::NoDotAndDotDot;
    QDir::Filters firstFilters = entryFilters;
    if (recursive)
        firstFilters &= ~QDir::Filters(QDir::Dirs | QDir::AllDirs);

    const QDir dir(folder);
    const QStringList patterns = names.split(u'|', Qt::SkipEmptyParts);
    for (const QFileInfo& entry : dir.entryInfoList(patterns, firstFilters, QDir::NoSort))
        result.append(QDir::cleanPath(entry.absoluteFilePath()));
    if (!recursive)
        return;

    const QDir::Filters folderFilters
        = (filters & ~QDir::Filters(QDir::Files)) | QDir::AllDirs | QDir::NoDotAndDotDot;
    for (const QFileInfo& entry : dir.entryInfoList(QStringList(), folderFilters, QDir::NoSort)) {
        if (!entry.isDir())
            continue;
        const QString subfolder = QDir::cleanPath(entry.absoluteFilePath());
        if (wantsFolders)
            result.append(subfolder);
        if (!LeadsBackToAncestor(entry))
            AppendFilesRecursive(subfolder, nameFilter, filters, recursive, result);
    }
}

QString BaseFolder(const QString& base, bool baseIsFile)
{
    return QDir::cleanPath(baseIsFile ? QFileInfo(base).absolutePath() : base);
}

} // namespace

bool IsUncPath(const QString& path)
{
    const auto isSlash = [](QChar c) { return c == u'/' || c == u'\\'; };
    return path.size() >= 2 && isSlash(path[0]) && isSlash(path[1]);
}

bool IsAbsolutePath(const QString& path)
{
    return path.contains(u':') || IsUncPath(path) || IsPosixAbsolutePath(path);
}

bool IsLocalPath(const QString& path)
{
    return IsPosixAbsolutePath(path) || path.indexOf(u':') <= 1;
}

QString MakeAbsolutePath(const QString& path, const QString& base, bool baseIsFile)
{
    if (IsAbsolutePath(path))
        return QDir::cleanPath(path);
    return QDir::cleanPath(
        QStringLiteral("%1/%2").arg(BaseFolder(base, baseIsFile), path));
}

QString MakeRelativePath(const QString& path, const QString& base, bool baseIsFile)
{
    if (!IsAbsolutePath(path))
        return QDir::cleanPath(path);
    return QDir::cleanPath(QDir(BaseFolder(base, baseIsFile)).relativeFilePath(path));
}

QString ResolveLinkPath(const QString& linkPath, const QString& holder)
{
    return MakeAbsolutePath(QDir::cleanPath(linkPath), holder, true);
}

QStringList ListFilesRecursive(const QString& path, const QString& nameFilter,
                               const QDir::Filters& filters, bool recursive)
{
    QStringList result;
    AppendFilesRecursive(path, nameFilter, filters, recursive, result);
    return result;
}

QString MakeUniqueFilePath(const QString& path, const QString& pattern)
{
    return MakeUniqueFilePath(path, pattern, QString());
}

QString MakeUniqueFilePath(const QString& path, const QString& pattern,
                           const QString& firstDecoration)
{
    if (path.isEmpty())
        return path;
    const QFileInfo info(QDir::cleanPath(path));
    if (!info.exists())
        return path;

    const QString counted = pattern.isEmpty() ? QStringLiteral("%1") : pattern;
    const QString folder = QDir::cleanPath(info.absolutePath());
    const QString suffix = info.suffix();
    QString decoration = firstDecoration;
    for (int n = 2; n < std::numeric_limits<int>::max();) {
        if (decoration.isEmpty())
            decoration = counted.arg(n++);
        QString candidate
            = QStringLiteral("%1/%2%3").arg(folder, info.completeBaseName(), decoration);
        if (!suffix.isEmpty())
            candidate += u'.' + suffix;
        if (!QFile::exists(candidate))
            return candidate;
        decoration.clear();
    }
    return QString();
}

QByteArray GetPathHash(const QString& path)
{
    return QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Md5).toHex();
}

QString GetApplicationFilePath()
{
    if (QCoreApplication::instance())
        return QDir::cleanPath(
            QFileInfo(QCoreApplication::applicationFilePath()).absoluteFilePath());
    return QDir::cleanPath(GetExecutableFilePath());
}

QString GetApplicationFolder()
{
    return QFileInfo(GetApplicationFilePath()).absolutePath();
}

QString GetCommonAppDataFolder()
{
    return QDir::cleanPath(GetCommonAppDataPath());
}

QString NormalizeServerPath(const QString& path)
{
    if (path.isEmpty() || !IsLocalPath(path))
        return path;
    QString result = QDir::cleanPath(path.trimmed());
    if (QFileInfo(result).isRoot())
        return result;
    if (!IsUncPath(result))
        while (result.startsWith(u'/'))
            result.remove(0, 1);
    while (result.endsWith(u'/'))
        result.chop(1);
    return result.replace(u'\\', u'/');
}

bool IsPathUnder(const QString& folder, const QString& path)
{
    QString parent = NormalizeServerPath(folder);
    const QString child = NormalizeServerPath(path);
    // The POSIX root holds every other local path, and normalising took away their leading slash.
    if (parent == u"/")
        return IsPosixAbsolutePath(path) && child != parent;
    if (QFileInfo(parent).isRoot())
        parent.chop(1);
    return parent.size() < child.size() && child.startsWith(parent, Qt::CaseInsensitive)
        && child[parent.size()] == u'/';
}

} // namespace Halvern::FileLink
