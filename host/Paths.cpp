#include "Paths.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Halvern::Host {

QString AbsolutePath(const QString& argument)
{
    if (argument.isEmpty())
        return {};
    return QDir::cleanPath(QDir::current().absoluteFilePath(QDir::fromNativeSeparators(argument)));
}

bool IsInFolder(const QString& path, const QString& folder)
{
    if (!path.startsWith(folder, Qt::CaseInsensitive))
        return false;
    return path.size() == folder.size() || folder.endsWith(u'/') || path[folder.size()] == u'/';
}

QString FreePath(const QString& path, const std::function<bool(const QString&)>& isTaken)
{
    const QFileInfo info(path);
    const QString suffix = info.suffix().isEmpty() ? QString() : u'.' + info.suffix();
    const QString base = info.path() + u'/' + info.completeBaseName();
    for (int number = 2;; ++number) {
        const QString candidate = base + QStringLiteral(" (%1)").arg(number) + suffix;
        if (!isTaken(candidate))
            return candidate;
    }
}

} // namespace Halvern::Host
