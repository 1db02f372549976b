// SPDX-License-Identifier: Apache-2.0

#include "services/WindowsPaths.h"

namespace Halvern::SyncServices {

namespace {

// From this length on a folder cannot be made without the prefix: it leaves room for a short name.
constexpr qsizetype LongPath = 248;

bool IsSlashAt(const QString& path, qsizetype index)
{
    return path.size() > index && (path[index] == u'/' || path[index] == u'\\');
}

} // namespace

bool IsDriveRelative(const QString& path)
{
    const bool hasDrive = path.size() > 1 && path[0].isLetter() && path[1] == u':';
    return hasDrive ? !IsSlashAt(path, 2) : IsSlashAt(path, 0) && !IsSlashAt(path, 1);
}

QString WindowsApiPath(const QString& path)
{
    QString native = path;
    native.replace(u'/', u'\\');
    if (native.size() < LongPath || native.startsWith(u"\\\\?\\"))
        return native;
    return native.startsWith(u"\\\\") ? QStringLiteral("\\\\?\\UNC") + native.mid(1)
                                      : QStringLiteral("\\\\?\\") + native;
}

} // namespace Halvern::SyncServices
