// SPDX-License-Identifier: Apache-2.0

#include "VersionsCommand.h"

#include "Console.h"
#include "Sessions.h"

#include "corsync/Versions.h"

#include <QtCore/QDir>

namespace Halvern::Cli {

namespace {

void Print(const QString& file, const QList<Jobs::Version>& versions, Console& console)
{
    QString count = QStringLiteral("no old versions");
    if (!versions.isEmpty())
        count = versions.size() == 1 ? QStringLiteral("1 old version")
                                     : QStringLiteral("%1 old versions").arg(versions.size());
    console.Line(QDir::toNativeSeparators(file) + QStringLiteral(": ") + count);
    for (const Jobs::Version& version : versions)
        console.Line(QStringLiteral("%1  %2  %3 bytes")
                         .arg(version.number, 5)
                         .arg(LocalTime(version.saved))
                         .arg(version.bytes, 10));
}

void PrintJson(const QString& file, const QList<Jobs::Version>& versions, Console& console)
{
    for (const Jobs::Version& version : versions)
        console.Json({{QStringLiteral("event"), QStringLiteral("version")},
                      {QStringLiteral("file"), file},
                      {QStringLiteral("number"), version.number},
                      {QStringLiteral("saved"), JsonTime(version.saved)},
                      {QStringLiteral("bytes"), version.bytes},
                      {QStringLiteral("storeFile"), version.storeFile}});
    console.Json({{QStringLiteral("event"), QStringLiteral("summary")},
                  {QStringLiteral("versions"), versions.size()},
                  {QStringLiteral("exitCode"), int(ExitCode::Complete)}});
}

} // namespace

QString LocalTime(const QDateTime& time)
{
    return time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString JsonTime(const QDateTime& time)
{
    return time.toUTC().toString(Qt::ISODateWithMs);
}

ExitCode RunVersions(const VersionsOptions& options, const CommonOptions& common, Console& console)
{
    constexpr Jobs::SessionUse Use = Jobs::SessionUse::PlanOnly;
    const Jobs::Session session = OpenSession(options.places, common, Use);
    const QList<Jobs::Version> versions = Jobs::ListVersions(session, options.file);
    const QString file = Jobs::VersionedFile(session, options.file);
    if (console.IsJson())
        PrintJson(file, versions, console);
    else
        Print(file, versions, console);
    return ExitCode::Complete;
}

} // namespace Halvern::Cli
