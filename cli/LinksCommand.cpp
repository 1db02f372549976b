// SPDX-License-Identifier: Apache-2.0

#include "LinksCommand.h"

#include "Cancellation.h"
#include "Console.h"
#include "Paths.h"
#include "Platform.h"
#include "Reasons.h"
#include "Report.h"
#include "Session.h"
#include "Settings.h"

#include "filelink/FileLinkImporter.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

namespace Halvern::Cli {

using FileLink::FileLinkImporter;
using FileLink::FileSet;
using SyncServices::FileMapping;
using SyncServices::Global;

namespace {

struct Link
{
    /// As it stands in the file.
    QString path;
    QString resolved;
    /// "found", "missing" or "url".
    QString status;
};

struct FileLinks
{
    QString file;
    QList<Link> links;
    /// Why the file could not be read; empty when it could.
    QString error;
};

QStringList CheckedFiles(const QStringList& arguments)
{
    QStringList files;
    for (const QString& argument : arguments) {
        const QFileInfo info(AbsolutePath(argument));
        if (!info.exists())
            throw CommandError(ExitCode::SourceMissing,
                               QStringLiteral("no such file: %1").arg(argument));
        if (info.isDir())
            throw CommandError(ExitCode::Usage,
                               QStringLiteral("%1 is a folder, not a file").arg(argument));
        files.append(info.filePath());
    }
    return files;
}

QString StatusOf(const FileMapping& linked)
{
    if (linked.HasFlag(FileMapping::NotFilePath))
        return QStringLiteral("url");
    return QFileInfo::exists(linked.GetSourceFile()) ? QStringLiteral("found")
                                                     : QStringLiteral("missing");
}

QList<Link> ReadLinks(const QString& file, const std::shared_ptr<JobController>& controller)
{
    FileLinkImporter importer(controller);
    if (!importer.Initialize({file}, {}, false, Global::DirectLinksOnly, {}) ||
        !importer.ExtractFileLinks())
        return {};
    FileSet& files = *importer.GetFileSet();
    const int index = files.IndexOfSourceFile(file);
    if (index < 0)
        return {};
    const auto holder = files.GetFiles().at(index);
    const auto stored = holder->GetSourceFileLinks();
    const auto members = files.GetSourceFileLinks(holder);
    QList<Link> links;
    for (qsizetype i = 0; i < members.size(); ++i) {
        // One member per link, in order.
        const QString path = i < stored.size() ? stored[i].Path : members[i]->GetSourceFile();
        links.append({path, members[i]->GetSourceFile(), StatusOf(*members[i])});
    }
    return links;
}

/// What the log says about the file since record number `from`.
QString ErrorsSince(qsizetype from, const QString& file, const LogSetup& log)
{
    const QSet<QString> paths{file};
    const Reasons reasons(log.Records().mid(from), paths);
    QList<LogRecord> records;
    for (const LogRecord& record : reasons.For(file) + reasons.General())
        if (record.IsAboutPlugin())
            records.append(record);
    return Reasons::Join(records);
}

QString Shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

void Print(const FileLinks& result, Console& console)
{
    if (!result.error.isEmpty())
        console.ProblemLine(QStringLiteral("%1: %2").arg(Shown(result.file), result.error));
    else
        console.Line(QStringLiteral("%1: %2").arg(
            Shown(result.file), result.links.isEmpty()
                                    ? QStringLiteral("no links")
                                    : QStringLiteral("%1 links").arg(result.links.size())));
    for (const Link& link : result.links) {
        const bool isUrl = link.status == QStringLiteral("url");
        const QString line = QStringLiteral("  ") + link.status.leftJustified(9) + link.path +
                             (isUrl ? QString() : QStringLiteral(" -> ") + Shown(link.resolved));
        if (link.status == QStringLiteral("missing"))
            console.ProblemLine(line);
        else
            console.Line(line);
    }
}

void PrintJson(const FileLinks& result, Console& console)
{
    for (const Link& link : result.links)
        console.Json({{QStringLiteral("event"), QStringLiteral("link")},
                      {QStringLiteral("file"), result.file},
                      {QStringLiteral("path"), link.path},
                      {QStringLiteral("resolved"), link.resolved},
                      {QStringLiteral("status"), link.status}});
    if (result.error.isEmpty())
        return;
    QJsonObject problem = JsonProblem(result.error);
    problem.insert(QStringLiteral("file"), result.file);
    console.Json(problem);
}

ExitCode ResultOf(const FileLinks& result)
{
    QList<ExitCode> codes;
    if (!result.error.isEmpty())
        codes.append(ExitCode::PluginOrDatabase);
    for (const Link& link : result.links)
        if (link.status == QStringLiteral("missing"))
            codes.append(ExitCode::MissingLinks);
    return MostSerious(codes);
}

} // namespace

ExitCode RunLinks(const LinksOptions& options, const CommonOptions& common, const LogSetup& log,
                  Console& console)
{
    const QStringList files = CheckedFiles(ExpandPatterns(options.files));
    const QTemporaryDir folder;
    if (!folder.isValid())
        throw CommandError(ExitCode::Failed, folder.errorString());
    const Session session(ThrowawaySettings(folder.path()), common.pluginPaths);
    const auto controller = std::make_shared<JobController>([] {});
    QList<ExitCode> codes;
    for (const QString& file : files) {
        if (controller->IsCancelRequested())
            break;
        const qsizetype from = log.Records().size();
        FileLinks result{file, ReadLinks(file, controller), {}};
        result.error = ErrorsSince(from, file, log);
        if (console.IsJson())
            PrintJson(result, console);
        else
            Print(result, console);
        codes.append(ResultOf(result));
    }
    if (controller->StoppedJob())
        codes.append(ExitCode::Cancelled);
    const ExitCode code = MostSerious(codes);
    console.Json({{QStringLiteral("event"), QStringLiteral("summary")},
                  {QStringLiteral("files"), codes.size()},
                  {QStringLiteral("exitCode"), int(code)}});
    return code;
}

} // namespace Halvern::Cli
