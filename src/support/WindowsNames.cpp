// SPDX-License-Identifier: Apache-2.0

#include "support/WindowsNames.h"

#include <QtCore/QStringList>

#include <algorithm>

namespace Halvern::FileLink {

namespace {

// From this length on a folder cannot be made without the prefix: it leaves room for a short name.
constexpr qsizetype LongPath = 248;

bool IsForbiddenCharacter(QChar character)
{
    return character < u' ' || QStringLiteral("<>:\"|?*\\").contains(character);
}

/// A device has its name in every folder, with any suffix.
bool NamesDevice(const QString& part)
{
    const QString name = part.left(part.indexOf(u'.')).trimmed().toUpper();
    if (name.size() == 4 && (name.startsWith(u"COM") || name.startsWith(u"LPT")))
        return QStringLiteral("123456789\u00b9\u00b2\u00b3").contains(name.back());
    return QStringList{QStringLiteral("CON"), QStringLiteral("PRN"),    QStringLiteral("AUX"),
                       QStringLiteral("NUL"), QStringLiteral("CONIN$"), QStringLiteral("CONOUT$")}
        .contains(name);
}

bool IsForbidden(const QString& part)
{
    return part.endsWith(u'.') || part.endsWith(u' ') || NamesDevice(part) ||
           std::any_of(part.cbegin(), part.cend(), IsForbiddenCharacter);
}

bool HasDrive(const QString& path)
{
    return path.size() > 1 && path[0].isLetter() && path[1] == u':';
}

} // namespace

QString ForbiddenWindowsName(const QString& path)
{
    const QString names = HasDrive(path) ? path.mid(2) : path;
    for (const QString& part : names.split(u'/', Qt::SkipEmptyParts))
        if (IsForbidden(part))
            return part;
    return {};
}

QString WindowsApiPath(const QString& path)
{
    QString native = path;
    native.replace(u'/', u'\\');
    if (native.size() < LongPath || native.startsWith(u"\\\\?\\"))
        return native;
    if (native.startsWith(u"\\\\"))
        return QStringLiteral("\\\\?\\UNC") + native.mid(1);
    return HasDrive(native) ? QStringLiteral("\\\\?\\") + native : native;
}

bool RuntimeTakesPath(const QString& native)
{
    return !native.contains(u'?') && !native.contains(u'*');
}

} // namespace Halvern::FileLink
