// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "ConflictHint.h"
#include "Console.h"

#include <QtCore/QDir>

namespace Halvern::Cli {

using Jobs::Conflict;
using Jobs::FileResult;
using Jobs::Summary;

namespace {

/// What a pattern excludes is only of interest to somebody who wonders where it is.
bool HasLine(const FileResult& result, bool isVerbose)
{
    return isVerbose || result.remark != Jobs::Remark::Excluded || !result.linkedFrom.isEmpty() ||
           result.IsProblem();
}

/// It did not come along, or not as it should; the exit code says that there is one.
bool IsLeftToDo(const FileResult& result)
{
    return result.outcome == Jobs::Outcome::Missing || result.outcome == Jobs::Outcome::Refused ||
           result.outcome == Jobs::Outcome::Locked;
}

void PrintCounts(const ImportReport& report, Console& console)
{
    const QString unknownFormats = UnknownFormatsLine(report.result.summary);
    if (!unknownFormats.isEmpty())
        console.Line(unknownFormats);
    console.Line(CountLine(report.result.summary, report.folders));
}

void PrintText(const ImportReport& report, Console& console)
{
    const QList<Jobs::Finding>& findings = report.result.summary.findings;
    for (const Conflict& conflict : report.conflicts)
        console.ProblemLine(TextOf(conflict, report.folders));
    for (const Jobs::Finding& finding : findings)
        console.ProblemLine(TextOf(finding));
    for (const FileResult& result : report.result.files) {
        if (result.IsProblem() || IsLeftToDo(result))
            console.ProblemLine(TextOf(result, report.folders));
        else if (HasLine(result, report.isVerbose))
            console.Line(TextOf(result, report.folders));
    }
    if (report.conflicts.isEmpty() && findings.isEmpty())
        PrintCounts(report, console);
    Print(report.result.summary.registrationFaults, console);
}

void PrintJson(const ImportReport& report, Console& console)
{
    const Summary& summary = report.result.summary;
    for (const Jobs::InterruptedJob& job : summary.interrupted)
        console.Json(JsonOf(job));
    for (const Conflict& conflict : report.conflicts)
        console.Json(JsonOf(conflict));
    for (const Jobs::Finding& finding : summary.findings)
        console.Json(JsonOf(finding));
    for (const FileResult& result : report.result.files)
        console.Json(JsonOf(result));
    for (const FileLink::Problem& problem : summary.problems)
        console.Json(JsonOf(problem));
    for (const QString& warning : summary.warnings)
        console.Json(JsonWarning(warning));
    if (!summary.databaseError.isEmpty())
        console.Json(JsonProblem(summary.databaseError));
    Print(summary.registrationFaults, console);
    console.Json(JsonOf(summary));
}

} // namespace

void Print(const QList<Jobs::RegistrationFault>& faults, Console& console)
{
    for (const Jobs::RegistrationFault& fault : faults) {
        console.Json(JsonOf(fault));
        const QString line =
            QDir::toNativeSeparators(fault.file) + QStringLiteral(": ") + fault.text;
        if (fault.isBroken)
            console.Error(line);
        else
            console.Note(QStringLiteral("warning: ") + line);
    }
}

void Print(const ImportReport& report, Console& console)
{
    if (console.IsJson())
        PrintJson(report, console);
    else
        PrintText(report, console);
    const Summary& summary = report.result.summary;
    for (const Jobs::InterruptedJob& job : summary.interrupted)
        console.Note(TextOf(job, report.folders));
    for (const FileLink::Problem& problem : summary.problems)
        console.Error(TextOf(problem));
    for (const QString& warning : summary.warnings)
        console.Note(QStringLiteral("warning: ") + warning);
    if (!summary.databaseError.isEmpty())
        console.Error(QStringLiteral("sync database: ") + summary.databaseError);
    if (!report.conflicts.isEmpty())
        console.Note(HintFor(report.conflicts));
    else if (!summary.findings.isEmpty())
        console.Note(QStringLiteral("nothing was copied"));
}

} // namespace Halvern::Cli
