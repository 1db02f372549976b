// SPDX-License-Identifier: Apache-2.0

#include "PluginsCommand.h"

#include "Console.h"
#include "Report.h"
#include "Sessions.h"
#include "Words.h"

#include "corsync/Plugins.h"

#include <QtCore/QJsonArray>

namespace Halvern::Cli {

namespace {

void Print(const Jobs::PluginStatus& status, Console& console)
{
    const FileLink::PluginDescription& plugin = status.plugin;
    const QString name = plugin.name.isEmpty() ? plugin.module : plugin.name;
    const QString line = WordOf(status.state).leftJustified(10) + QStringLiteral("  ") + name +
                         QStringLiteral(" (") + plugin.module + QStringLiteral("), ") +
                         plugin.service.toLower() + QStringLiteral(": ") +
                         plugin.fileTypes.join(QStringLiteral(", "));
    if (status.state == Jobs::PluginState::Fails)
        console.ProblemLine(line + QStringLiteral(": ") + status.error);
    else
        console.Line(line);
}

void PrintJson(const Jobs::PluginStatus& status, Console& console)
{
    const FileLink::PluginDescription& plugin = status.plugin;
    QJsonObject object{{QStringLiteral("event"), QStringLiteral("plugin")},
                       {QStringLiteral("name"), plugin.name},
                       {QStringLiteral("module"), plugin.module},
                       {QStringLiteral("service"), plugin.service},
                       {QStringLiteral("fileTypes"), QJsonArray::fromStringList(plugin.fileTypes)},
                       {QStringLiteral("priority"), qint64(plugin.priority)},
                       {QStringLiteral("state"), WordOf(status.state)}};
    if (!status.error.isEmpty())
        object.insert(QStringLiteral("reason"), status.error);
    console.Json(object);
}

} // namespace

ExitCode RunPlugins(const PluginsOptions& options, const CommonOptions& common, Console& console)
{
    const auto session = OpenTemporarySession(common);
    const QList<Jobs::PluginStatus> plugins = Jobs::ListPlugins(*session, options.load);
    const QList<Jobs::RegistrationFault> faults = Jobs::ListRegistrationFaults(*session);
    Print(faults, console);
    QList<ExitCode> codes{HasBroken(faults) ? ExitCode::PluginOrDatabase : ExitCode::Complete};
    for (const Jobs::PluginStatus& status : plugins) {
        if (console.IsJson())
            PrintJson(status, console);
        else
            Print(status, console);
        if (status.state == Jobs::PluginState::Fails)
            codes.append(ExitCode::PluginOrDatabase);
    }
    if (plugins.isEmpty())
        console.Line(QStringLiteral("no plug-ins are registered"));
    const ExitCode code = MostSerious(codes);
    console.Json({{QStringLiteral("event"), QStringLiteral("summary")},
                  {QStringLiteral("plugins"), plugins.size()},
                  {QStringLiteral("exitCode"), int(code)}});
    return code;
}

} // namespace Halvern::Cli
