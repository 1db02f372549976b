// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "Console.h"
#include "Words.h"

#include <QtCore/QDir>

#include <algorithm>

namespace Halvern::Cli {

using Jobs::Conflict;
using Jobs::ConflictKind;
using Jobs::FileResult;
using Jobs::Outcome;
using Jobs::Summary;

namespace {

constexpr int StatusWidth = 11;

/// A file name may hold a line break; a report has one line per file.
QString Printable(QString text)
{
    for (QChar& character : text)
        if (character.category() == QChar::Other_Control)
            character = u'?';
    return text;
}

/// As it is, or relative to the folder when it lies below that.
QString Shown(const QString& path, const QString& folder)
{
    const QString prefix = folder.endsWith(u'/') ? folder : folder + u'/';
    const bool below = !folder.isEmpty() && path.size() > prefix.size() &&
                       path.startsWith(prefix, Qt::CaseInsensitive);
    const QString shown = below ? path.mid(prefix.size()) : path;
    return Printable(QDir::toNativeSeparators(shown));
}

/// In brackets after the paths.
QString Remark(const FileResult& result, const ReportFolders& folders)
{
    QStringList remarks;
    if (result.outcome == Outcome::Missing && !result.linkedFrom.isEmpty()) {
        QStringList from;
        for (const QString& path : result.linkedFrom)
            from.append(Shown(path, folders.current));
        remarks.append(QStringLiteral("linked from ") + from.join(QStringLiteral(", ")));
    }
    if (result.outcome == Outcome::Locked)
        remarks.append(QStringLiteral("links pending"));
    if (result.sourceDeleted && result.outcome != Outcome::Moved)
        remarks.append(QStringLiteral("source deleted"));
    return remarks.isEmpty() ? QString()
                             : QStringLiteral(" (") + remarks.join(QStringLiteral("; ")) + u')';
}

QString Explanation(const Conflict& conflict, const ReportFolders& folders)
{
    switch (conflict.kind) {
    case ConflictKind::TargetTaken:
        return QStringLiteral("a file stands there");
    case ConflictKind::CannotRename:
        return QStringLiteral("a file stands there, and this one must keep its name");
    case ConflictKind::FolderInTheWay:
        return QStringLiteral("a folder stands there");
    case ConflictKind::FileInTheWay:
        return QStringLiteral("a file stands where the folder must go");
    case ConflictKind::SameTarget:
        return QStringLiteral("also wanted by ") + Shown(conflict.other, folders.current);
    case ConflictKind::BothChanged:
        return QStringLiteral("source and copy both changed");
    }
    return {};
}

/// Which option would let the import go on.
QString Hint(const QList<Conflict>& conflicts)
{
    const auto any = [&](auto&& predicate) {
        return std::any_of(conflicts.begin(), conflicts.end(), predicate);
    };
    const bool taken = any([](const Conflict& c) { return c.kind == ConflictKind::TargetTaken; });
    const bool selected = any([](const Conflict& c) { return c.selected; });
    const bool linked = any([](const Conflict& c) { return !c.selected; });
    const QString option = !linked     ? QStringLiteral("--selected-collisions")
                           : !selected ? QStringLiteral("--linked-collisions")
                                       : QStringLiteral("--collisions");
    return QStringLiteral("nothing was copied; choose with %1 %2")
        .arg(option, taken ? QStringLiteral("keep, rename or replace") : QStringLiteral("rename"));
}

void PrintText(const ImportReport& report, Console& console)
{
    for (const Conflict& conflict : report.conflicts)
        console.ProblemLine(TextOf(conflict, report.folders));
    for (const FileResult& result : report.result.files) {
        if (result.IsProblem())
            console.ProblemLine(TextOf(result, report.folders));
        else
            console.Line(TextOf(result, report.folders));
    }
    if (report.conflicts.isEmpty())
        console.Line(CountLine(report.result.summary, report.folders));
    Print(report.result.summary.registrationFaults, console);
}

void PrintJson(const ImportReport& report, Console& console)
{
    const Summary& summary = report.result.summary;
    for (const Conflict& conflict : report.conflicts)
        console.Json(JsonOf(conflict));
    for (const FileResult& result : report.result.files)
        console.Json(JsonOf(result));
    for (const FileLink::Problem& problem : summary.problems)
        console.Json(JsonProblem(problem.text));
    if (!summary.databaseError.isEmpty())
        console.Json(JsonProblem(summary.databaseError));
    Print(summary.registrationFaults, console);
    console.Json(JsonOf(summary));
}

} // namespace

bool ShowsTarget(const FileResult& result)
{
    switch (result.outcome) {
    case Outcome::Missing:
    case Outcome::Url:
    case Outcome::Skipped:
    case Outcome::Refused:
    case Outcome::InPlace:
        return false;
    case Outcome::Copied:
    case Outcome::Moved:
    case Outcome::Replaced:
    case Outcome::Updated:
    case Outcome::Renamed:
    case Outcome::Kept:
    case Outcome::Left:
    case Outcome::Unchanged:
    case Outcome::Locked:
    case Outcome::Orphaned:
    case Outcome::Pruned:
    case Outcome::Failed:
    case Outcome::NotDone:
        return !result.target.isEmpty();
    }
    return false;
}

QString TextOf(const FileResult& result, const ReportFolders& folders)
{
    QString line = WordOf(result.outcome).leftJustified(StatusWidth) +
                   (result.outcome == Outcome::Url ? Printable(result.source)
                                                   : Shown(result.source, folders.current));
    if (ShowsTarget(result))
        line += QStringLiteral(" -> ") + Shown(result.target, folders.cloud);
    line += Remark(result, folders);
    const QString reason = ReasonOf(result);
    if (!reason.isEmpty())
        line += QStringLiteral(": ") + Printable(reason);
    return line;
}

QString TextOf(const Conflict& conflict, const ReportFolders& folders)
{
    return QStringLiteral("conflict").leftJustified(StatusWidth) +
           Shown(conflict.source, folders.current) + QStringLiteral(" -> ") +
           Shown(conflict.target, folders.cloud) + QStringLiteral(": ") +
           Explanation(conflict, folders);
}

QString CountLine(const Summary& summary, const ReportFolders& folders)
{
    QStringList parts;
    for (auto it = summary.counts.begin(); it != summary.counts.end(); ++it)
        parts.append(QStringLiteral("%1 %2").arg(it.value()).arg(WordOf(it.key())));
    const qint64 problems = summary.filesWithProblems - summary.Count(Outcome::Failed);
    if (problems > 0)
        parts.append(QStringLiteral("%1 with problems").arg(problems));
    if (parts.isEmpty())
        parts.append(QStringLiteral("no files"));
    return parts.join(QStringLiteral(", ")) + QStringLiteral("; cloud cache folder ") +
           QDir::toNativeSeparators(folders.cloud);
}

void Print(const QList<Jobs::RegistrationFault>& faults, Console& console)
{
    for (const Jobs::RegistrationFault& fault : faults) {
        console.Json(JsonOf(fault));
        const QString line =
            Printable(QDir::toNativeSeparators(fault.file) + QStringLiteral(": ") + fault.text);
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
    for (const FileLink::Problem& problem : summary.problems)
        console.Error(problem.text);
    if (!summary.databaseError.isEmpty())
        console.Error(QStringLiteral("sync database: ") + summary.databaseError);
    if (!report.conflicts.isEmpty())
        console.Note(Hint(report.conflicts));
}

} // namespace Halvern::Cli
