// SPDX-License-Identifier: Apache-2.0

#include "CommandLine.h"

#include "Choices.h"
#include "Masking.h"
#include "Text.h"

#include "corsync/Version.h"

namespace Halvern::Cli {

namespace {

constexpr char Examples[] = R"(Examples:
  corsync import project --to Demo        a folder, with every file its files link to
  corsync import a.gltf --dry-run         what would happen, without doing it
  corsync import a.gltf --collisions rename
  corsync retry Demo                      rewrite the links that could not be yet
  corsync versions Demo/a.gltf            what a file was before it was replaced
  corsync restore Demo/a.gltf             the newest of these, put back
  corsync doctor                          whether all is well with what imports rely on
  corsync links a.gltf                    the links of a file
  corsync plugins                         which formats are understood

Exit codes: 0 complete, 1 failed, 2 usage, 3 source missing, 4 missing links,
5 locked files, 6 unresolved conflicts, 7 plug-in or database, 8 refused files,
20 cancelled.)";

const NamedValues<ProgressMode> ProgressModes = {
    {"auto", ProgressMode::Auto}, {"always", ProgressMode::Always}, {"never", ProgressMode::Never}};

/// As log4cplus numbers them.
const NamedValues<int> LogLevels = {
    {"error", 40000}, {"warn", 30000}, {"info", 20000}, {"debug", 10000}, {"trace", 0}};

/// CLI11 takes the arguments last one first, without the program's name.
std::vector<std::string> Reversed(const QStringList& arguments)
{
    std::vector<std::string> reversed;
    for (qsizetype i = arguments.size() - 1; i > 0; --i)
        reversed.push_back(arguments[i].toStdString());
    return reversed;
}

std::string ShortUsageError(const CLI::App* app, const CLI::Error& error)
{
    // A subcommand's mistake is reported with the help of that subcommand.
    std::string command = "corsync";
    for (const CLI::App* sub : app->get_subcommands())
        command += " " + sub->get_name();
    return "corsync: " + Masked(Text(error.what())).toStdString() + "\nTry '" + command +
           " --help'.\n";
}

} // namespace

CommandLine::CommandLine()
    : m_app("Brings design files into a cloud-synced folder together with every file that they "
            "reference,\nand rewrites the links inside the copies.",
            "corsync")
{
    m_app.set_version_flag("--version", "corsync " CORSYNC_VERSION_STRING);
    m_app.set_help_flag("-h,--help", "Print this help and exit");
    m_app.get_formatter()->column_width(32);
    m_app.failure_message(ShortUsageError);
    m_app.footer(Examples);
    // One command line on every system: "/folder" is a path.
    m_app.allow_windows_style_options(false);
    AddImport();
    AddRetry();
    AddVersions();
    AddRestore();
    AddDoctor();
    AddLinks();
    AddPlugins();
}

Options CommandLine::Parse(const QStringList& arguments)
{
    m_app.parse(Reversed(arguments));
    if (m_app.get_subcommands().empty())
        throw CLI::RequiredError(
            "a command (import, retry, versions, restore, doctor, links or plugins)");
    Options options;
    options.common = m_common;
    if (m_linksCommand->parsed()) {
        options.command = m_links;
    } else if (m_importCommand->parsed()) {
        options.command = ParsedImport();
    } else if (m_retryCommand->parsed()) {
        options.command = m_retry;
    } else if (m_versionsCommand->parsed()) {
        options.command = m_versions;
    } else if (m_restoreCommand->parsed()) {
        options.command = m_restore;
    } else if (m_doctorCommand->parsed()) {
        options.command = m_doctor;
    } else {
        m_plugins.load = !m_noLoad;
        options.command = m_plugins;
    }
    return options;
}

CLI::Option* CommandLine::AddText(CLI::App& app, const std::string& name, QString& value,
                                  const std::string& help)
{
    return app.add_option_function<std::string>(
        name, [&value](const std::string& text) { value = Text(text); }, help);
}

CLI::Option* CommandLine::AddTexts(CLI::App& app, const std::string& name, QStringList& values,
                                   const std::string& help)
{
    const auto take = [&values](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            values.append(Text(text));
    };
    return app.add_option_function<std::vector<std::string>>(name, take, help);
}

CLI::Option* CommandLine::AddRepeated(CLI::App& app, const std::string& name, QStringList& values,
                                      const std::string& help)
{
    return AddTexts(app, name, values, help)->allow_extra_args(false);
}

void CommandLine::AddCommonOptions(CLI::App& app)
{
    AddRepeated(app, "--plugin-path", m_common.pluginPaths,
                "Folder with plug-ins (registration files and libraries), searched before the "
                "usual ones; may be given several times")
        ->type_name("DIR")
        ->group("Plug-ins");
    CLI::Option* isolate =
        AddText(app, "--isolate", m_common.isolate,
                "Plug-ins in a process of their own: auto (those that do not come with corsync, "
                "default), always, never")
            ->type_name("WHEN")
            ->group("Plug-ins");
    isolate->check(CLI::IsMember({"auto", "always", "never"}).description(""));
    app.add_flag("--json", m_common.json, "Print one JSON object per line, and nothing else")
        ->group("Output");
    app.add_flag("-v,--verbose", m_common.log.verbosity,
                 "Show the log on standard error (-vv, -vvv: more)")
        ->group("Output");
    app.add_flag("-q,--quiet", m_common.quiet, "Print nothing but errors")->group("Output");
    AddText(app, "--log-file", m_common.log.file, "Append the log to this file")
        ->type_name("FILE")
        ->group("Output");
    CLI::Option* level =
        app.add_option("--log-level", m_common.log.fileLevel,
                       "What goes into the log file: error, warn, info (default), debug, trace")
            ->type_name("LEVEL")
            ->group("Output");
    TakesOneOf(level, LogLevels);
}

void CommandLine::AddPlaces(CLI::App& app, Jobs::Places& places)
{
    AddText(app, "--cloud-folder", places.cloudFolder,
            "The cloud cache folder (default: as the settings say)")
        ->type_name("DIR")
        ->group("Where");
    AddText(app, "--database", places.database,
            "The sync database (default: as the settings say; one of its own for each "
            "--cloud-folder)")
        ->type_name("FILE")
        ->group("Where");
    AddText(app, "--settings", places.settingsFile, "The settings file (default: the user's)")
        ->type_name("FILE")
        ->group("Where");
}

void CommandLine::AddProgress(CLI::App& app, ProgressMode& mode)
{
    CLI::Option* progress =
        app.add_option("--progress", mode, "Progress line: auto (default), always, never")
            ->type_name("WHEN")
            ->group("Output");
    TakesOneOf(progress, ProgressModes);
}

void CommandLine::AddRetry()
{
    m_retryCommand = m_app.add_subcommand(
        "retry", "Rewrite the links in copies where that failed or had to wait");
    CLI::App& app = *m_retryCommand;
    AddText(app, "FOLDER", m_retry.folder,
            "Folder below the cloud cache folder (default: all of it)")
        ->type_name("");
    AddPlaces(app, m_retry.places);
    AddProgress(app, m_retry.progress);
    AddCommonOptions(app);
    app.footer(
        "Needs no sources. Exit code 5 when a copy is still open in another program, 1 or 7\n"
        "when its links could not be rewritten again.");
}

void CommandLine::AddLinks()
{
    m_linksCommand = m_app.add_subcommand("links", "Show the links inside files");
    AddTexts(*m_linksCommand, "FILE", m_links.files, "Files to read; they are not changed")
        ->type_name("")
        ->required();
    AddCommonOptions(*m_linksCommand);
    m_linksCommand->footer(
        "Each link is found, missing or a URL. Exit code 4 when one is missing, 7 when\n"
        "a file could not be read.");
}

void CommandLine::AddPlugins()
{
    CLI::App* plugins = m_app.add_subcommand("plugins", "List the format plug-ins");
    plugins->add_flag("--no-load", m_noLoad, "Do not try whether the libraries load");
    AddCommonOptions(*plugins);
    plugins->footer("Exit code 7 when a plug-in does not load.");
}

} // namespace Halvern::Cli
