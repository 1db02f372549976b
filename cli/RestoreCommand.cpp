// SPDX-License-Identifier: Apache-2.0

#include "RestoreCommand.h"

#include "Console.h"
#include "Sessions.h"
#include "VersionsCommand.h"

#include "corsync/Versions.h"

#include <QtCore/QDir>

namespace Halvern::Cli {

namespace {

void Print(const Jobs::RestoredVersion& restored, Console& console)
{
    QString line = QStringLiteral("restored   %1 (version %2, kept %3")
                       .arg(QDir::toNativeSeparators(restored.file))
                       .arg(restored.version.number)
                       .arg(LocalTime(restored.version.saved));
    if (restored.replaced)
        line += QStringLiteral("; what stood there is version 1 now");
    console.Line(line + u')');
}

void PrintJson(const Jobs::RestoredVersion& restored, Console& console)
{
    console.Json({{QStringLiteral("event"), QStringLiteral("restored")},
                  {QStringLiteral("file"), restored.file},
                  {QStringLiteral("number"), restored.version.number},
                  {QStringLiteral("saved"), JsonTime(restored.version.saved)},
                  {QStringLiteral("bytes"), restored.version.bytes},
                  {QStringLiteral("replaced"), restored.replaced}});
    console.Json({{QStringLiteral("event"), QStringLiteral("summary")},
                  {QStringLiteral("restored"), 1},
                  {QStringLiteral("exitCode"), int(ExitCode::Complete)}});
}

} // namespace

ExitCode RunRestore(const RestoreOptions& options, const CommonOptions& common, Console& console)
{
    constexpr Jobs::SessionUse Use = Jobs::SessionUse::Import;
    const Jobs::Session session = OpenSession(options.places, common, Use);
    const Jobs::RestoredVersion restored =
        Jobs::RestoreVersion(session, options.file, options.number, options.output);
    if (console.IsJson())
        PrintJson(restored, console);
    else
        Print(restored, console);
    return ExitCode::Complete;
}

} // namespace Halvern::Cli
