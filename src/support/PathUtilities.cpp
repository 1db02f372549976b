// SPDX-License-Identifier: Apache-2.0

#include "support/PathUtilities.h"

#include "base/CaseFolding.h"
#include "base/PathText.h"
#include "base/Units.h"
#include "support/FileOperations.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <limits>

namespace Halvern::FileLink {

using Base::Units;

// Hosts pass these as numbers, and so does the selection intake.
static_assert(int(QDir::Dirs | QDir::Files | QDir::Hidden) == 0x103);
static_assert(int(QDir::NoSort) == -1);

namespace {

/// Lists folders and what is below them, following symbolic links as long as they lead to folders
/// that are not being listed already.
class FileLister
{
public:
    FileLister(const QStringList& patterns, const QDir::Filters& filters, bool recursive)
        : m_patterns(patterns), m_filters(filters), m_recursive(recursive)
    {}

    QStringList List(const QString& folder)
    {
        Append(folder, QFileInfo(folder).canonicalFilePath());
        return m_result;
    }

private:
    void Append(const QString& folder, const QString& canonical);
    void AppendSubfolders(const QDir& dir, const QString& canonical);
    bool IsBeingListed(const QString& canonical) const;

    const QStringList m_patterns;
    const QDir::Filters m_filters;
    const bool m_recursive;
    QStringList m_result;
    /// The real paths of the folders from the first one down to the one being listed.
    QStringList m_open;
};

void FileLister::Append(const QString& folder, const QString& canonical)
{
    QDir::Filters filters = m_filters.toInt() == 0 ? QDir::Filters(QDir::Files) : m_filters;
    filters |= QDir::NoDotAndDotDot;
    if (m_recursive)
        filters &= ~QDir::Filters(QDir::Dirs | QDir::AllDirs);
    const QDir dir(folder);
    for (const QFileInfo& entry : ListEntries(dir, m_patterns, filters))
        m_result.append(QDir::cleanPath(entry.absoluteFilePath()));
    if (!m_recursive)
        return;
    m_open.append(canonical);
    AppendSubfolders(dir, canonical);
    m_open.removeLast();
}

void FileLister::AppendSubfolders(const QDir& dir, const QString& canonical)
{
    const bool wantsFolders = m_filters.testAnyFlags(QDir::Dirs | QDir::AllDirs);
    const QDir::Filters filters =
        (m_filters & ~QDir::Filters(QDir::Files)) | QDir::AllDirs | QDir::NoDotAndDotDot;
    for (const QFileInfo& entry : ListEntries(dir, QStringList(), filters)) {
        if (!entry.isDir())
            continue;
        const QString folder = QDir::cleanPath(entry.absoluteFilePath());
        if (wantsFolders)
            m_result.append(folder);
        const QString target =
            entry.isSymLink() ? entry.canonicalFilePath() : canonical + u'/' + entry.fileName();
        if (!IsBeingListed(target))
            Append(folder, target);
    }
}

bool FileLister::IsBeingListed(const QString& canonical) const
{
    const QString above = canonical.endsWith(u'/') ? canonical : canonical + u'/';
    return m_open.contains(canonical) || m_open.last().startsWith(above);
}

QString BaseFolder(const QString& base, bool baseIsFile)
{
    return QDir::cleanPath(baseIsFile ? AbsoluteFolderOf(base) : base);
}

} // namespace

bool IsUncPath(const QString& path)
{
    return Base::IsUncPath(Units(path));
}

bool IsShareRoot(const QString& path)
{
    return Base::IsShareRoot(Units(path));
}

bool IsAbsolutePath(const QString& path)
{
    return Base::IsAbsolutePath(Units(path));
}

bool IsLocalPath(const QString& path)
{
    return Base::IsLocalPath(Units(path));
}

QString MakeAbsolutePath(const QString& path, const QString& base, bool baseIsFile)
{
    if (IsAbsolutePath(path))
        return QDir::cleanPath(path);
    return QDir::cleanPath(QStringLiteral("%1/%2").arg(BaseFolder(base, baseIsFile), path));
}

QString MakeRelativePath(const QString& path, const QString& base, bool baseIsFile)
{
    if (!IsAbsolutePath(path))
        return QDir::cleanPath(path);
    return QDir::cleanPath(RelativePathFrom(BaseFolder(base, baseIsFile), QDir::cleanPath(path)));
}

QString ResolveLinkPath(const QString& linkPath, const QString& holder)
{
    return MakeAbsolutePath(QDir::cleanPath(linkPath), holder, true);
}

QStringList ListFilesRecursive(const QString& path, const QString& nameFilter,
                               const QDir::Filters& filters, bool recursive)
{
    const QFileInfo info(path);
    const bool isFolder = IsFolder(path);
    QString names = isFolder ? nameFilter : info.fileName();
    if (names.isEmpty())
        names = QStringLiteral("*");
    const QStringList patterns = names.split(u'|', Qt::SkipEmptyParts);
    return FileLister(patterns, filters, recursive).List(isFolder ? path : info.path());
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
    if (!PathExists(info.filePath()))
        return path;

    const QString counted = pattern.isEmpty() ? QStringLiteral("%1") : pattern;
    const QString folder = QDir::cleanPath(info.absolutePath());
    const QString suffix = info.suffix();
    QString decoration = firstDecoration;
    for (int n = 2; n < std::numeric_limits<int>::max();) {
        if (decoration.isEmpty())
            decoration = counted.arg(n++);
        QString candidate =
            QStringLiteral("%1/%2%3").arg(folder, info.completeBaseName(), decoration);
        if (!suffix.isEmpty())
            candidate += u'.' + suffix;
        if (!PathExists(candidate))
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
        return Base::IsPosixAbsolutePath(Units(path)) && child != parent;
    if (QFileInfo(parent).isRoot())
        parent.chop(1);
    return parent.size() < child.size() && child[parent.size()] == u'/' &&
           Base::StartsWithIgnoringCase(Units(child), Units(parent));
}

} // namespace Halvern::FileLink
