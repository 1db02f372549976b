// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "ConflictText.h"
#include "Words.h"

#include <QtCore/QDir>
#include <QtCore/QLocale>

namespace Halvern::Cli {

using Jobs::Conflict;
using Jobs::ConflictKind;
using Jobs::FileResult;
using Jobs::Finding;
using Jobs::FindingKind;
using Jobs::Outcome;
using Jobs::Summary;

namespace {

constexpr int StatusWidth = 11;

/// As it is, or relative to the folder when it lies below that.
QString Shown(const QString& path, const QString& folder)
{
    const QString prefix = folder.endsWith(u'/') ? folder : folder + u'/';
    const bool below = !folder.isEmpty() && path.size() > prefix.size() &&
                       path.startsWith(prefix, Qt::CaseInsensitive);
    const QString shown = below ? path.mid(prefix.size()) : path;
    return QDir::toNativeSeparators(shown);
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
    if (result.outcome == Outcome::Left)
        remarks.append(QStringLiteral("the copy was changed, the source not"));
    // A reason says the same at length.
    if (result.outcome == Outcome::Locked && result.problems.isEmpty() &&
        result.remark == Jobs::Remark::None)
        remarks.append(QStringLiteral("links pending"));
    if (result.sourceDeleted && result.outcome != Outcome::Moved)
        remarks.append(QStringLiteral("source deleted"));
    if (result.outside)
        remarks.append(QStringLiteral("outside the project"));
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
        return QStringLiteral("both changed since the copy was made");
    }
    return {};
}

QString SizeText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString NeededText(const Finding& finding)
{
    switch (finding.kind) {
    case FindingKind::NoSpace:
    case FindingKind::BaseStoreTooSmall:
        return QStringLiteral(": %1 needed, %2 available")
            .arg(SizeText(finding.needed), SizeText(finding.available));
    case FindingKind::NoFiles:
        return QStringLiteral(": %1 needed, %2 available")
            .arg(finding.needed)
            .arg(finding.available);
    case FindingKind::BaseStoreBroken:
    case FindingKind::FolderNotWritable:
        return {};
    }
    return {};
}

QString ExtensionText(const QString& extension)
{
    return extension.isEmpty() ? QStringLiteral("without an extension") : u'.' + extension;
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
    QString line =
        WordOf(result.outcome).leftJustified(StatusWidth) +
        (result.outcome == Outcome::Url ? result.source : Shown(result.source, folders.current));
    if (ShowsTarget(result))
        line += QStringLiteral(" -> ") + Shown(result.target, folders.cloud);
    line += Remark(result, folders);
    const QString reason = ReasonOf(result);
    return reason.isEmpty() ? line : line + QStringLiteral(": ") + reason;
}

QString BriefTextOf(const Conflict& conflict, const ReportFolders& folders)
{
    return QStringLiteral("conflict").leftJustified(StatusWidth) +
           Shown(conflict.source, folders.current) + QStringLiteral(" -> ") +
           Shown(conflict.target, folders.cloud) + QStringLiteral(": ") +
           Explanation(conflict, folders);
}

QString TextOf(const Conflict& conflict, const ReportFolders& folders)
{
    const QString line = BriefTextOf(conflict, folders);
    return conflict.kind == ConflictKind::BothChanged
               ? line + QStringLiteral(": ") + SidesText(conflict)
               : line;
}

QString TextOf(const Finding& finding)
{
    return QStringLiteral("problem").leftJustified(StatusWidth) + SentenceOf(finding.kind) +
           QDir::toNativeSeparators(finding.path) + NeededText(finding);
}

QString TextOf(const Jobs::InterruptedJob& job, const ReportFolders& folders)
{
    return QStringLiteral(
               "An import of %1 to %2 was interrupted: %3 of %4 files were done; what it "
               "left is taken up")
        .arg(job.begun.toLocalTime().toString(u"yyyy-MM-dd HH:mm:ss"),
             Shown(job.target, folders.cloud))
        .arg(job.done)
        .arg(job.planned);
}

QString TextOf(const FileLink::Problem& problem)
{
    const QString file = QDir::toNativeSeparators(problem.file);
    const bool isNamed = problem.text.contains(problem.file) || problem.text.contains(file);
    return isNamed ? problem.text : file + QStringLiteral(": ") + problem.text;
}

QString UnknownFormatsLine(const Summary& summary)
{
    qint64 files = 0;
    QStringList parts;
    for (auto it = summary.unknownFormats.begin(); it != summary.unknownFormats.end(); ++it) {
        files += it.value();
        parts.append(QStringLiteral("%1 ").arg(it.value()) + ExtensionText(it.key()));
    }
    if (parts.isEmpty())
        return {};
    return (files == 1 ? QStringLiteral("1 file") : QStringLiteral("%1 files").arg(files)) +
           QStringLiteral(" whose format no plug-in reads: ") + parts.join(QStringLiteral(", "));
}

QString CountLine(const Summary& summary, const ReportFolders& folders)
{
    QStringList parts;
    for (auto it = summary.counts.begin(); it != summary.counts.end(); ++it)
        parts.append(QStringLiteral("%1 %2").arg(it.value()).arg(WordOf(it.key())));
    const qint64 problems = summary.filesWithProblems - summary.Count(Outcome::Failed);
    if (problems > 0)
        parts.append(QStringLiteral("%1 with problems").arg(problems));
    if (summary.outside > 0)
        parts.append(QStringLiteral("%1 from outside the project").arg(summary.outside));
    if (parts.isEmpty())
        parts.append(QStringLiteral("no files"));
    return parts.join(QStringLiteral(", ")) + QStringLiteral("; cloud cache folder ") +
           QDir::toNativeSeparators(folders.cloud);
}

} // namespace Halvern::Cli
