// SPDX-License-Identifier: Apache-2.0

#include "ConflictText.h"

namespace Halvern::Cli {

using Jobs::ConflictSide;

namespace {

QString SizeAndTime(qint64 bytes, const QDateTime& modified)
{
    return QStringLiteral("%1 bytes, ").arg(bytes) +
           modified.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

/// "(1234 bytes, 2026-03-01 14:05:09; before: 1200 bytes, 2026-02-28 09:00:00)".
QString ThenAndNow(const ConflictSide& side)
{
    QString text = NowText(side);
    if (side.recordedModified.isValid())
        text += QStringLiteral("; before: ") + ThenText(side);
    return QStringLiteral(" (") + text + u')';
}

QString JsonTime(const QDateTime& time)
{
    return time.toUTC().toString(Qt::ISODateWithMs);
}

} // namespace

QString NowText(const ConflictSide& side)
{
    return side.modified.isValid() ? SizeAndTime(side.bytes, side.modified)
                                   : QStringLiteral("not known");
}

QString ThenText(const ConflictSide& side)
{
    return side.recordedModified.isValid() ? SizeAndTime(side.recordedBytes, side.recordedModified)
                                           : QStringLiteral("not recorded");
}

QString SidesText(const Jobs::Conflict& conflict)
{
    return QStringLiteral("the source") + ThenAndNow(conflict.sourceSide) +
           QStringLiteral(" and the copy") + ThenAndNow(conflict.targetSide);
}

QJsonObject JsonOf(const ConflictSide& side)
{
    QJsonObject object{{QStringLiteral("bytes"), side.bytes},
                       {QStringLiteral("modified"), JsonTime(side.modified)}};
    if (side.recordedModified.isValid()) {
        object.insert(QStringLiteral("recordedBytes"), side.recordedBytes);
        object.insert(QStringLiteral("recordedModified"), JsonTime(side.recordedModified));
    }
    return object;
}

} // namespace Halvern::Cli
