// SPDX-License-Identifier: Apache-2.0

#include "Options.h"

#include "corsync/Version.h"

#include <CLI/CLI.hpp>

#include <sstream>

namespace Halvern::Cli {

namespace {

constexpr char Examples[] = R"(Examples:
  corsync import project --to Demo        a folder, with every file its files link to
  corsync import a.gltf --dry-run         what would happen, without doing it
  corsync import a.gltf --collisions rename
  corsync links a.gltf                    the links of a file
  corsync plugins                         which formats are understood

Exit codes: 0 complete, 1 failed, 2 usage, 3 source missing, 4 missing links,
5 locked files, 6 unresolved collisions, 7 plug-in or database, 20 cancelled.)";

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

/// What CLI11 fills in before it is turned into Options.
struct Raw
{
    std::string logFile, logLevel = "info";
    int verbosity = 0;
    bool quiet = false, json = false;
    std::vector<std::string> pluginPaths;

    std::vector<std::string> sources;
    std::string to, types, cloudFolder, database, settings, progress = "auto";
    std::string collisions = "stop", selectedCollisions, linkedCollisions;
    bool move = false, linksOnly = false, directLinksOnly = false, dryRun = false;
    bool noLoad = false;
};

QString Text(const std::string& text)
{
    return QString::fromStdString(text);
}

QStringList Texts(const std::vector<std::string>& texts)
{
    QStringList list;
    for (const std::string& text : texts)
        list.append(Text(text));
    return list;
}

void AddCommonOptions(CLI::App& app, Raw& raw)
{
    app.add_option("--plugin-path", raw.pluginPaths,
                   "Folder with plug-ins (registration files and libraries), searched before the "
                   "usual ones; may be given several times")
        ->type_name("DIR")
        ->allow_extra_args(false)
        ->group("Plug-ins");
    app.add_flag("--json", raw.json, "Print one JSON object per line, and nothing else")
        ->group("Output");
    app.add_flag("-v,--verbose", raw.verbosity, "Show the log on standard error (-vv, -vvv: more)")
        ->group("Output");
    app.add_flag("-q,--quiet", raw.quiet, "Print nothing but errors")->group("Output");
    app.add_option("--log-file", raw.logFile, "Append the log to this file")
        ->type_name("FILE")
        ->group("Output");
    app.add_option("--log-level", raw.logLevel,
                   "What goes into the log file: error, warn, info (default), debug, trace")
        ->type_name("LEVEL")
        ->check(CLI::IsMember({"error", "warn", "info", "debug", "trace"}).description(""))
        ->group("Output");
}

void AddPolicy(CLI::App& app, const std::string& name, std::string& value, const std::string& help)
{
    app.add_option(name, value, help)
        ->type_name("POLICY")
        ->check(CLI::IsMember({"stop", "keep", "rename", "replace"}).description(""))
        ->group("Files whose target is taken");
}

void AddServiceOptions(CLI::App& app, Raw& raw)
{
    app.add_option("--cloud-folder", raw.cloudFolder,
                   "The cloud cache folder (default: as the settings say)")
        ->type_name("DIR")
        ->group("Where");
    app.add_option("--database", raw.database,
                   "The sync database (default: as the settings say; one of its own for each "
                   "--cloud-folder)")
        ->type_name("FILE")
        ->group("Where");
    app.add_option("--settings", raw.settings, "The settings file (default: the user's)")
        ->type_name("FILE")
        ->group("Where");
}

CLI::App* AddImport(CLI::App& app, Raw& raw)
{
    CLI::App* import = app.add_subcommand(
        "import", "Bring files and everything they link to into the cloud cache folder");
    import->add_option("SOURCE", raw.sources, "Files and folders to import")
        ->type_name("")
        ->required();
    import->add_option("--to", raw.to, "Folder below the cloud cache folder to import into")
        ->type_name("FOLDER")
        ->group("Where");
    AddServiceOptions(*import, raw);
    import->add_flag("--move", raw.move, "Delete each given source after copying it")
        ->group("What");
    import->add_flag("--links-only", raw.linksOnly, "Copy only what the sources link to")
        ->group("What");
    import
        ->add_flag("--direct-links-only", raw.directLinksOnly,
                   "Do not follow the links of linked files")
        ->group("What");
    import
        ->add_option("--types", raw.types,
                     "Extensions whose links are followed, such as gltf,glb (default: all)")
        ->type_name("LIST")
        ->group("What");
    import->add_flag("-n,--dry-run", raw.dryRun, "Print what would happen and do nothing")
        ->group("What");
    AddPolicy(*import, "--collisions", raw.collisions, "stop (default), keep, rename or replace");
    AddPolicy(*import, "--selected-collisions", raw.selectedCollisions, "... for given files only");
    AddPolicy(*import, "--linked-collisions", raw.linkedCollisions, "... for linked files only");
    import->add_option("--progress", raw.progress, "Progress line: auto (default), always, never")
        ->type_name("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}).description(""))
        ->group("Output");
    AddCommonOptions(*import, raw);
    import->footer(ImportExamples);
    return import;
}

CLI::App* AddLinks(CLI::App& app, Raw& raw)
{
    CLI::App* links = app.add_subcommand("links", "Show the links inside files");
    links->add_option("FILE", raw.sources, "Files to read; they are not changed")
        ->type_name("")
        ->required();
    AddCommonOptions(*links, raw);
    links->footer("Each link is found, missing or a URL. Exit code 4 when one is missing, 7 when\n"
                  "a file could not be read.");
    return links;
}

CLI::App* AddPlugins(CLI::App& app, Raw& raw)
{
    CLI::App* plugins = app.add_subcommand("plugins", "List the format plug-ins");
    plugins->add_flag("--no-load", raw.noLoad, "Do not try whether the libraries load");
    AddCommonOptions(*plugins, raw);
    plugins->footer("Exit code 7 when a plug-in does not load.");
    return plugins;
}

CollisionPolicy Policy(const std::string& name)
{
    if (name == "keep")
        return CollisionPolicy::Keep;
    if (name == "rename")
        return CollisionPolicy::Rename;
    return name == "replace" ? CollisionPolicy::Replace : CollisionPolicy::Stop;
}

int Level(const std::string& name)
{
    if (name == "error")
        return 40000;
    if (name == "warn")
        return 30000;
    if (name == "debug")
        return 10000;
    return name == "trace" ? 0 : 20000;
}

ProgressMode Progress(const std::string& name)
{
    if (name == "always")
        return ProgressMode::Always;
    return name == "never" ? ProgressMode::Never : ProgressMode::Auto;
}

/// "gltf, .glb" and "*.gltf" are all ways to say it.
QStringList Types(const std::string& list)
{
    QStringList types;
    for (QString type : Text(list).split(u',', Qt::SkipEmptyParts)) {
        type = type.trimmed();
        if (!type.isEmpty())
            types.append(type);
    }
    return types;
}

CommonOptions Common(const Raw& raw)
{
    CommonOptions common;
    common.log = {Text(raw.logFile), Level(raw.logLevel), raw.verbosity};
    common.quiet = raw.quiet;
    common.json = raw.json;
    common.pluginPaths = Texts(raw.pluginPaths);
    return common;
}

ImportOptions Import(const Raw& raw)
{
    const auto orBoth = [&](const std::string& own) {
        return Policy(own.empty() ? raw.collisions : own);
    };
    ImportOptions import;
    import.sources = Texts(raw.sources);
    import.to = Text(raw.to);
    import.move = raw.move;
    import.linksOnly = raw.linksOnly;
    import.directLinksOnly = raw.directLinksOnly;
    import.selectedCollisions = orBoth(raw.selectedCollisions);
    import.linkedCollisions = orBoth(raw.linkedCollisions);
    import.types = Types(raw.types);
    import.cloudFolder = Text(raw.cloudFolder);
    import.database = Text(raw.database);
    import.settings = Text(raw.settings);
    import.dryRun = raw.dryRun;
    import.progress = Progress(raw.progress);
    return import;
}

/// CLI11 takes the arguments last one first, without the program's name.
std::vector<std::string> Reversed(const QStringList& arguments)
{
    std::vector<std::string> reversed;
    for (qsizetype i = arguments.size() - 1; i > 0; --i)
        reversed.push_back(arguments[i].toStdString());
    return reversed;
}

ParsedCommandLine Ended(const CLI::App& app, const CLI::ParseError& error)
{
    std::ostringstream out, err;
    const bool ok = app.exit(error, out, err) == 0;
    ParsedCommandLine parsed;
    parsed.exitCode = ok ? ExitCode::Complete : ExitCode::Usage;
    parsed.output = Text(out.str());
    parsed.error = Text(err.str());
    return parsed;
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

ParsedCommandLine ParseCommandLine(const QStringList& arguments)
{
    Raw raw;
    CLI::App app("Brings design files into a cloud-synced folder together with every file they "
                 "reference,\nand rewrites the links inside the copies.",
                 "corsync");
    app.set_version_flag("--version", "corsync " CORSYNC_VERSION_STRING);
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.get_formatter()->column_width(32);
    app.failure_message(ShortUsageError);
    app.footer(Examples);
    // One command line on every system: "/folder" is a path.
    app.allow_windows_style_options(false);
    const CLI::App* import = AddImport(app, raw);
    const CLI::App* links = AddLinks(app, raw);
    AddPlugins(app, raw);
    try {
        app.parse(Reversed(arguments));
        if (app.get_subcommands().empty())
            throw CLI::RequiredError("a command (import, links or plugins)");
    } catch (const CLI::ParseError& error) {
        return Ended(app, error);
    }
    ParsedCommandLine parsed;
    parsed.options.emplace();
    parsed.options->common = Common(raw);
    if (import->parsed())
        parsed.options->command = Import(raw);
    else if (links->parsed())
        parsed.options->command = LinksOptions{Texts(raw.sources)};
    else
        parsed.options->command = PluginsOptions{!raw.noLoad};
    return parsed;
}

} // namespace Halvern::Cli
