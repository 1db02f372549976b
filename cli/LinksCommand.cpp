// SPDX-License-Identifier: Apache-2.0

#include "LinksCommand.h"

#include "Console.h"
#include "Platform.h"
#include "Report.h"
#include "Sessions.h"
#include "Words.h"

#include "corsync/FileLinks.h"
#include "corsync/Plugins.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Halvern::Cli {

namespace {

QString Shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

/// ".dwg"; of a name without an extension the kind of file that it is.
QString FormatOf(const QString& file)
{
    const QString extension = QFileInfo(file).suffix();
    return extension.isEmpty() ? QStringLiteral("files without an extension") : u'.' + extension;
}

QString CountOf(const Jobs::LinksOfFile& result)
{
    if (!result.isKnownFormat)
        return QStringLiteral("no plug-in reads ") + FormatOf(result.file);
    if (result.links.isEmpty())
        return QStringLiteral("no links");
    return QStringLiteral("%1 links").arg(result.links.size());
}

void Print(const Jobs::LinksOfFile& result, Console& console)
{
    if (!result.problems.isEmpty())
        console.ProblemLine(Shown(result.file) + QStringLiteral(": ") + Sentence(result.problems));
    else
        console.Line(Shown(result.file) + QStringLiteral(": ") + CountOf(result));
    for (const Jobs::StoredLink& link : result.links) {
        QString line = QStringLiteral("  ") + NameOf(link.state).leftJustified(9) + link.text;
        if (link.state != Jobs::LinkState::Url)
            line += QStringLiteral(" -> ") + Shown(link.file);
        if (link.state == Jobs::LinkState::Missing)
            console.ProblemLine(line);
        else
            console.Line(line);
    }
}

void PrintJson(const Jobs::LinksOfFile& result, Console& console)
{
    for (const Jobs::StoredLink& link : result.links)
        console.Json({{QStringLiteral("event"), QStringLiteral("link")},
                      {QStringLiteral("file"), result.file},
                      {QStringLiteral("path"), link.text},
                      {QStringLiteral("resolved"), link.file},
                      {QStringLiteral("status"), NameOf(link.state)}});
    if (!result.isKnownFormat)
        console.Json({{QStringLiteral("event"), QStringLiteral("unknown-format")},
                      {QStringLiteral("file"), result.file},
                      {QStringLiteral("extension"), QFileInfo(result.file).suffix()}});
    if (result.problems.isEmpty())
        return;
    QJsonObject problem = JsonProblem(Sentence(result.problems));
    problem.insert(QStringLiteral("file"), result.file);
    console.Json(problem);
}

ExitCode ResultOf(const Jobs::LinksOfFile& result)
{
    QList<ExitCode> codes;
    for (const FileLink::Problem& problem : result.problems)
        codes.append(Jobs::IsPluginProblem(problem) ? ExitCode::PluginOrDatabase
                                                    : ExitCode::Failed);
    for (const Jobs::StoredLink& link : result.links)
        if (link.state == Jobs::LinkState::Missing)
            codes.append(ExitCode::MissingLinks);
    return MostSerious(codes);
}

} // namespace

ExitCode RunLinks(const LinksOptions& options, const CommonOptions& common,
                  const Jobs::CancelToken& cancel, Console& console)
{
    const QStringList files = ExpandPatterns(options.files);
    const auto session = OpenTemporarySession(common);
    const QList<Jobs::RegistrationFault> faults = Jobs::ListRegistrationFaults(*session);
    int count = 0;
    ExitCode code = HasBroken(faults) ? ExitCode::PluginOrDatabase : ExitCode::Complete;
    const auto show = [&](const Jobs::LinksOfFile& result) {
        if (console.IsJson())
            PrintJson(result, console);
        else
            Print(result, console);
        code = MostSerious({code, ResultOf(result)});
        ++count;
    };
    if (!Jobs::ReadLinks(*session, files, show, &cancel))
        code = MostSerious({code, ExitCode::Cancelled});
    Print(faults, console);
    console.Json({{QStringLiteral("event"), QStringLiteral("summary")},
                  {QStringLiteral("files"), count},
                  {QStringLiteral("exitCode"), int(code)}});
    return code;
}

} // namespace Halvern::Cli
