// SPDX-License-Identifier: Apache-2.0

#include "PluginsCommand.h"

#include "Console.h"
#include "Reasons.h"
#include "Report.h"
#include "Session.h"
#include "Settings.h"

#include "filelink/FileLinkManager.h"

#include <QtCore/QJsonArray>
#include <QtCore/QTemporaryDir>

namespace Halvern::Cli {

using FileLink::FileLinkManager;
using FileLink::PluginDescription;

namespace {

enum class LoadState
{
    NotTried,
    Loads,
    Fails,
};

struct PluginState
{
    PluginDescription plugin;
    LoadState state = LoadState::NotTried;
    QString error;
};

PluginState Examine(const PluginDescription& plugin, bool load)
{
    PluginState result{plugin, LoadState::NotTried, {}};
    if (!load)
        return result;
    const bool loads = FileLinkManager::GetInstance()->LoadPlugin(plugin.module, &result.error);
    result.state = loads ? LoadState::Loads : LoadState::Fails;
    return result;
}

QString StateText(const PluginState& plugin)
{
    switch (plugin.state) {
    case LoadState::NotTried:
        return QStringLiteral("registered");
    case LoadState::Loads:
        return QStringLiteral("ok");
    case LoadState::Fails:
        return QStringLiteral("failed");
    }
    return {};
}

void Print(const PluginState& state, Console& console)
{
    const PluginDescription& plugin = state.plugin;
    const QString name = plugin.name.isEmpty() ? plugin.module : plugin.name;
    QString line = QStringLiteral("%1  %2 (%3), %4: %5")
                       .arg(StateText(state).leftJustified(10), name, plugin.module,
                            plugin.service.toLower(), plugin.fileTypes.join(QStringLiteral(", ")));
    if (state.state == LoadState::Fails)
        console.ProblemLine(line + QStringLiteral(": ") + state.error);
    else
        console.Line(line);
}

void PrintJson(const PluginState& state, Console& console)
{
    QJsonObject object{
        {QStringLiteral("event"), QStringLiteral("plugin")},
        {QStringLiteral("name"), state.plugin.name},
        {QStringLiteral("module"), state.plugin.module},
        {QStringLiteral("service"), state.plugin.service},
        {QStringLiteral("fileTypes"), QJsonArray::fromStringList(state.plugin.fileTypes)},
        {QStringLiteral("priority"), qint64(state.plugin.priority)},
        {QStringLiteral("state"), StateText(state)}};
    if (!state.error.isEmpty())
        object.insert(QStringLiteral("reason"), state.error);
    console.Json(object);
}

/// Registration files that could not be read.
ExitCode PrintRegistrationErrors(const QList<LogRecord>& records, Console& console)
{
    const QSet<QString> noPaths;
    const Reasons reasons(records, noPaths);
    for (const LogRecord& record : reasons.General()) {
        console.Json(JsonProblem(record.text));
        console.Error(record.text);
    }
    return reasons.General().isEmpty() ? ExitCode::Complete : ExitCode::PluginOrDatabase;
}

} // namespace

ExitCode RunPlugins(const PluginsOptions& options, const CommonOptions& common, const LogSetup& log,
                    Console& console)
{
    const QTemporaryDir folder;
    if (!folder.isValid())
        throw CommandError(ExitCode::Failed, folder.errorString());
    const Session session(ThrowawaySettings(folder.path()), common.pluginPaths);
    const QList<PluginDescription> plugins = FileLinkManager::GetInstance()->GetPlugins();
    // Taken before anything is loaded: a library that does not load is reported with its plug-in.
    QList<ExitCode> codes{PrintRegistrationErrors(log.Records(), console)};
    for (const PluginDescription& plugin : plugins) {
        const PluginState state = Examine(plugin, options.load);
        if (console.IsJson())
            PrintJson(state, console);
        else
            Print(state, console);
        codes.append(state.state == LoadState::Fails ? ExitCode::PluginOrDatabase
                                                     : ExitCode::Complete);
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
