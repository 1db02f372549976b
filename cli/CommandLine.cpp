// SPDX-License-Identifier: Apache-2.0

#include "CommandLine.h"

#include "Text.h"

#include "corsync/Version.h"

#include <utility>
#include <vector>

namespace Halvern::Cli {

namespace {

constexpr char Examples[] = R"(Examples:
  corsync import project --to Demo        a folder, with every file its files link to
  corsync import a.gltf --dry-run         what would happen, without doing it
  corsync import a.gltf --collisions rename
  corsync links a.gltf                    the links of a file
  corsync plugins                         which formats are understood

Exit codes: 0 complete, 1 failed, 2 usage, 3 source missing, 4 missing links,
5 locked files, 6 unresolved conflicts, 7 plug-in or database, 8 refused files,
20 cancelled.)";

constexpr char ImportExamples[] = R"(Examples:
  corsync import project --to Demo
      copies the folder to Demo/project below the cloud cache folder, brings
      along the files that its files link to, and rewrites the links in the copies
  corsync import a.gltf b.gltf --to Demo --collisions rename
      copies under a new name where a file stands in the way
  corsync import a.gltf --to Demo --links-only
      copies only what a.gltf links to
  corsync import project --json > result.ndjson
      one JSON object per file, and a summary

A policy for collisions is one of
  stop      copy nothing and list the conflicts (the default)
  keep      use the file that stands there
  rename    copy under a new name: "a (2).gltf"
  replace   put the copy in its place)";

/// Names in the order in which a usage error lists them.
template <typename Value>
using NamedValues = std::vector<std::pair<std::string, Value>>;

/// The option takes one of the names, each for a value.
template <typename Value>
void TakesOneOf(CLI::Option* option, const NamedValues<Value>& values)
{
    std::vector<std::string> names;
    for (const auto& [name, value] : values)
        names.push_back(name);
    // The one that is added last comes first: it refuses in words what the other does not know.
    option->transform(CLI::Transformer(values).description(""));
    option->transform(CLI::IsMember(names).description(""));
}

const NamedValues<Jobs::CollisionPolicy> Policies = {{"stop", Jobs::CollisionPolicy::Stop},
                                                     {"keep", Jobs::CollisionPolicy::Keep},
                                                     {"rename", Jobs::CollisionPolicy::Rename},
                                                     {"replace", Jobs::CollisionPolicy::Replace}};

const NamedValues<ProgressMode> ProgressModes = {
    {"auto", ProgressMode::Auto}, {"always", ProgressMode::Always}, {"never", ProgressMode::Never}};

/// As log4cplus numbers them.
const NamedValues<int> LogLevels = {
    {"error", 40000}, {"warn", 30000}, {"info", 20000}, {"debug", 10000}, {"trace", 0}};

QStringList TypesIn(const QString& list)
{
    QStringList types;
    for (const QString& type : list.split(u','))
        types.append(type.trimmed());
    types.removeAll(QString());
    return types;
}

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
    return "corsync: " + std::string(error.what()) + "\nTry '" + command + " --help'.\n";
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
    AddLinks();
    AddPlugins();
}

Options CommandLine::Parse(const QStringList& arguments)
{
    m_app.parse(Reversed(arguments));
    if (m_app.get_subcommands().empty())
        throw CLI::RequiredError("a command (import, links or plugins)");
    Options options;
    options.common = m_common;
    if (m_linksCommand->parsed()) {
        options.command = m_links;
    } else if (m_importCommand->parsed()) {
        if (m_selectedOption->empty())
            m_import.request.selectedCollisions = m_collisions;
        if (m_linkedOption->empty())
            m_import.request.linkedCollisions = m_collisions;
        options.command = m_import;
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

CLI::Option* CommandLine::AddPolicy(CLI::App& app, const std::string& name,
                                    Jobs::CollisionPolicy& policy, const std::string& help)
{
    CLI::Option* option = app.add_option(name, policy, help)
                              ->type_name("POLICY")
                              ->group("Files whose target is taken");
    TakesOneOf(option, Policies);
    return option;
}

void CommandLine::AddCommonOptions(CLI::App& app)
{
    AddTexts(app, "--plugin-path", m_common.pluginPaths,
             "Folder with plug-ins (registration files and libraries), searched before the "
             "usual ones; may be given several times")
        ->type_name("DIR")
        ->allow_extra_args(false)
        ->group("Plug-ins");
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

void CommandLine::AddPlaces(CLI::App& app)
{
    AddText(app, "--cloud-folder", m_import.places.cloudFolder,
            "The cloud cache folder (default: as the settings say)")
        ->type_name("DIR")
        ->group("Where");
    AddText(app, "--database", m_import.places.database,
            "The sync database (default: as the settings say; one of its own for each "
            "--cloud-folder)")
        ->type_name("FILE")
        ->group("Where");
    AddText(app, "--settings", m_import.places.settingsFile,
            "The settings file (default: the user's)")
        ->type_name("FILE")
        ->group("Where");
}

void CommandLine::AddWhat(CLI::App& app)
{
    Jobs::ImportRequest& request = m_import.request;
    app.add_flag("--move", request.move, "Delete each given source after copying it")
        ->group("What");
    app.add_flag("--links-only", request.linksOnly, "Copy only what the sources link to")
        ->group("What");
    app.add_flag("--direct-links-only", request.directLinksOnly,
                 "Do not follow the links of linked files")
        ->group("What");
    // Split here: CLI11 would take the next argument for a list that names nothing, such as ",".
    app.add_option_function<std::string>(
           "--types",
           [&request](const std::string& list) { request.fileTypes = TypesIn(Text(list)); },
           "Extensions whose links are followed, such as gltf,glb (default: all)")
        ->type_name("LIST")
        ->group("What");
    app.add_flag("-n,--dry-run", m_import.dryRun, "Print what would happen and do nothing")
        ->group("What");
}

void CommandLine::AddImport()
{
    m_importCommand = m_app.add_subcommand(
        "import", "Bring files and everything they link to into the cloud cache folder");
    CLI::App& app = *m_importCommand;
    Jobs::ImportRequest& request = m_import.request;
    AddTexts(app, "SOURCE", request.sources, "Files and folders to import")
        ->type_name("")
        ->required();
    AddText(app, "--to", request.target, "Folder below the cloud cache folder to import into")
        ->type_name("FOLDER")
        ->group("Where");
    AddPlaces(app);
    AddWhat(app);
    AddPolicy(app, "--collisions", m_collisions, "stop (default), keep, rename or replace");
    m_selectedOption = AddPolicy(app, "--selected-collisions", request.selectedCollisions,
                                 "... for given files only");
    m_linkedOption = AddPolicy(app, "--linked-collisions", request.linkedCollisions,
                               "... for linked files only");
    CLI::Option* progress = app.add_option("--progress", m_import.progress,
                                           "Progress line: auto (default), always, never")
                                ->type_name("WHEN")
                                ->group("Output");
    TakesOneOf(progress, ProgressModes);
    AddCommonOptions(app);
    app.footer(ImportExamples);
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
