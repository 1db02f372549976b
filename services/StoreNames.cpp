// SPDX-License-Identifier: Apache-2.0

#include "services/StoreNames.h"

#include "services/Paths.h"
#include "services/StoreFiles.h"

#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

namespace Halvern::SyncServices::StoreNames {

namespace {

constexpr int pathHashLength = 32;
constexpr int contentHashLength = 64;

/// The suffix of a file name, unless the copy's name would get too long with it.
QString ShortSuffix(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix();
    return suffix.isEmpty() || suffix.toUtf8().size() > 32 ? QString() : u'.' + suffix;
}

} // namespace

QString PathHash(const QString& key)
{
    return QString::fromLatin1(HashText(key.toUtf8()).toHex().left(pathHashLength));
}

QString CopyName(const QString& pathHash, const QByteArray& contentHash, const QString& path)
{
    return pathHash + u'-' + QString::fromLatin1(contentHash.toHex()) + ShortSuffix(path);
}

bool IsCopyName(const QString& name)
{
    static const QRegularExpression pattern(QStringLiteral("^[0-9a-f]{32}-[0-9a-f]{64}(\\..*)?$"));
    return pattern.match(name).hasMatch();
}

bool IsPartName(const QString& name)
{
    static const QRegularExpression pattern(QStringLiteral("^[0-9]+-[0-9]+-[0-9]+\\.part$"));
    return pattern.match(name).hasMatch();
}

QString PathHashOf(const QString& copyName)
{
    return copyName.left(pathHashLength);
}

QByteArray ContentHashOf(const QString& copyName)
{
    return QByteArray::fromHex(copyName.mid(pathHashLength + 1, contentHashLength).toLatin1());
}

QString Paths(const QString& storeFolder)
{
    return JoinPath(storeFolder, QStringLiteral("paths"));
}

QString Runs(const QString& storeFolder)
{
    return JoinPath(storeFolder, QStringLiteral("runs"));
}

QString Lock(const QString& storeFolder)
{
    return JoinPath(storeFolder, QStringLiteral("lock"));
}

} // namespace Halvern::SyncServices::StoreNames
