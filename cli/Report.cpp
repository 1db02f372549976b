// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "Console.h"
#include "Paths.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QMap>

#include <algorithm>

namespace Halvern::Cli {

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

QString Shown(const QString& path, const QString& folder)
{
    const bool below = !folder.isEmpty() && path.size() > folder.size() && IsInFolder(path, folder);
    const QString shown = below ? path.mid(folder.size() + (folder.endsWith(u'/') ? 0 : 1)) : path;
    return Printable(QDir::toNativeSeparators(shown));
}

QString Word(FileStatus status)
{
    if (status == FileStatus::InPlace)
        return QStringLiteral("in place");
    return status == FileStatus::NotDone ? QStringLiteral("not done") : StatusName(status);
}

/// In brackets behind the paths.
QString Remark(const FileOutcome& outcome, const ReportFolders& folders)
{
    QStringList remarks;
    if (outcome.status == FileStatus::Missing && !outcome.linkedFrom.isEmpty()) {
        QStringList from;
        for (const QString& path : outcome.linkedFrom)
            from.append(Shown(path, folders.current));
        remarks.append(QStringLiteral("linked from ") + from.join(QStringLiteral(", ")));
    }
    if (outcome.status == FileStatus::Locked)
        remarks.append(QStringLiteral("links pending"));
    if (outcome.moved && outcome.status != FileStatus::Moved)
        remarks.append(QStringLiteral("source deleted"));
    return remarks.isEmpty() ? QString()
                             : QStringLiteral(" (") + remarks.join(QStringLiteral("; ")) + u')';
}

bool ShowsTarget(const FileOutcome& outcome)
{
    switch (outcome.status) {
    case FileStatus::Missing:
    case FileStatus::Url:
    case FileStatus::Skipped:
    case FileStatus::InPlace:
        return false;
    case FileStatus::Copied:
    case FileStatus::Moved:
    case FileStatus::Replaced:
    case FileStatus::Renamed:
    case FileStatus::Kept:
    case FileStatus::Unchanged:
    case FileStatus::Locked:
    case FileStatus::Failed:
    case FileStatus::NotDone:
        return !outcome.target.isEmpty();
    }
    return false;
}

QString KindName(ConflictKind kind)
{
    switch (kind) {
    case ConflictKind::TargetTaken:
        return QStringLiteral("target-taken");
    case ConflictKind::CannotRename:
        return QStringLiteral("cannot-rename");
    case ConflictKind::FolderInTheWay:
        return QStringLiteral("folder-in-the-way");
    case ConflictKind::FileInTheWay:
        return QStringLiteral("file-in-the-way");
    case ConflictKind::SameTarget:
        return QStringLiteral("same-target");
    }
    return {};
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
    }
    return {};
}

/// How many files have each status, in the order of the enumeration.
QMap<FileStatus, int> Counts(const QList<FileOutcome>& outcomes)
{
    QMap<FileStatus, int> counts;
    for (const FileOutcome& outcome : outcomes)
        ++counts[outcome.status];
    return counts;
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
    for (const FileOutcome& outcome : report.files) {
        if (IsProblem(outcome))
            console.ProblemLine(TextOf(outcome, report.folders));
        else
            console.Line(TextOf(outcome, report.folders));
    }
    if (report.conflicts.isEmpty())
        console.Line(CountLine(report.files, report.folders));
}

void PrintJson(const ImportReport& report, Console& console)
{
    for (const Conflict& conflict : report.conflicts)
        console.Json(JsonOf(conflict));
    for (const FileOutcome& outcome : report.files)
        console.Json(JsonOf(outcome));
    for (const QString& problem : report.problems)
        console.Json(JsonProblem(problem));
    if (!report.databaseError.isEmpty())
        console.Json(JsonProblem(report.databaseError));
    console.Json(JsonSummary(report.files, report.conflicts.size(), report.Result()));
}

} // namespace

ExitCode ImportReport::Result() const
{
    QList<ExitCode> codes;
    for (const FileOutcome& outcome : files)
        codes.append(ExitCodeOf(outcome));
    if (!conflicts.isEmpty())
        codes.append(ExitCode::Collisions);
    if (!problems.isEmpty())
        codes.append(pluginProblem ? ExitCode::PluginOrDatabase : ExitCode::Failed);
    if (!databaseError.isEmpty())
        codes.append(ExitCode::PluginOrDatabase);
    if (cancelled)
        codes.append(ExitCode::Cancelled);
    return MostSerious(codes);
}

QString TextOf(const FileOutcome& outcome, const ReportFolders& folders)
{
    QString line = Word(outcome.status).leftJustified(StatusWidth) +
                   (outcome.status == FileStatus::Url ? Printable(outcome.source)
                                                      : Shown(outcome.source, folders.current));
    if (ShowsTarget(outcome))
        line += QStringLiteral(" -> ") + Shown(outcome.target, folders.cloud);
    line += Remark(outcome, folders);
    if (!outcome.reason.isEmpty())
        line += QStringLiteral(": ") + Printable(outcome.reason);
    return line;
}

QString TextOf(const Conflict& conflict, const ReportFolders& folders)
{
    return QStringLiteral("conflict").leftJustified(StatusWidth) +
           Shown(conflict.source, folders.current) + QStringLiteral(" -> ") +
           Shown(conflict.target, folders.cloud) + QStringLiteral(": ") +
           Explanation(conflict, folders);
}

QString CountLine(const QList<FileOutcome>& outcomes, const ReportFolders& folders)
{
    QStringList parts;
    const QMap<FileStatus, int> counts = Counts(outcomes);
    for (auto it = counts.begin(); it != counts.end(); ++it)
        parts.append(QStringLiteral("%1 %2").arg(it.value()).arg(Word(it.key())));
    const auto problems = std::count_if(outcomes.begin(), outcomes.end(), [](const auto& outcome) {
        return IsProblem(outcome) && outcome.status != FileStatus::Failed;
    });
    if (problems > 0)
        parts.append(QStringLiteral("%1 with problems").arg(problems));
    if (parts.isEmpty())
        parts.append(QStringLiteral("no files"));
    return QStringLiteral("%1; cloud cache folder %2")
        .arg(parts.join(QStringLiteral(", ")), QDir::toNativeSeparators(folders.cloud));
}

QJsonObject JsonOf(const FileOutcome& outcome)
{
    QJsonObject object{{QStringLiteral("event"), QStringLiteral("file")},
                       {QStringLiteral("status"), StatusName(outcome.status)},
                       {QStringLiteral("source"), outcome.source}};
    if (ShowsTarget(outcome))
        object.insert(QStringLiteral("target"), outcome.target);
    if (outcome.moved)
        object.insert(QStringLiteral("moved"), true);
    if (!outcome.linkedFrom.isEmpty())
        object.insert(QStringLiteral("linkedFrom"), QJsonArray::fromStringList(outcome.linkedFrom));
    if (!outcome.reason.isEmpty())
        object.insert(QStringLiteral("reason"), outcome.reason);
    return object;
}

QJsonObject JsonOf(const Conflict& conflict)
{
    QJsonObject object{{QStringLiteral("event"), QStringLiteral("conflict")},
                       {QStringLiteral("kind"), KindName(conflict.kind)},
                       {QStringLiteral("source"), conflict.source},
                       {QStringLiteral("target"), conflict.target},
                       {QStringLiteral("selected"), conflict.selected}};
    if (!conflict.other.isEmpty())
        object.insert(QStringLiteral("other"), conflict.other);
    return object;
}

QJsonObject JsonSummary(const QList<FileOutcome>& outcomes, qsizetype conflicts, ExitCode exitCode)
{
    QJsonObject counted;
    const QMap<FileStatus, int> counts = Counts(outcomes);
    for (auto it = counts.begin(); it != counts.end(); ++it)
        counted.insert(StatusName(it.key()), it.value());
    return {{QStringLiteral("event"), QStringLiteral("summary")},
            {QStringLiteral("files"), outcomes.size()},
            {QStringLiteral("counts"), counted},
            {QStringLiteral("conflicts"), conflicts},
            {QStringLiteral("exitCode"), int(exitCode)}};
}

QJsonObject JsonProblem(const QString& text)
{
    return {{QStringLiteral("event"), QStringLiteral("problem")}, {QStringLiteral("text"), text}};
}

void Print(const ImportReport& report, Console& console)
{
    if (console.IsJson())
        PrintJson(report, console);
    else
        PrintText(report, console);
    for (const QString& problem : report.problems)
        console.Error(problem);
    if (!report.databaseError.isEmpty())
        console.Error(QStringLiteral("sync database: ") + report.databaseError);
    if (!report.conflicts.isEmpty())
        console.Note(Hint(report.conflicts));
}

} // namespace Halvern::Cli
