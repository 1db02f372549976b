// SPDX-License-Identifier: Apache-2.0

#include "CommandLine.h"

#include "Choices.h"
#include "Text.h"

namespace Halvern::Cli {

using Jobs::CollisionPolicy;
using Jobs::ConflictAnswer;

namespace {

constexpr char Examples[] = R"(Examples:
  corsync import project --to Demo
      copies the folder to Demo/project below the cloud cache folder, brings
      along the files that its files link to, and rewrites the links in the copies
  corsync import a.gltf b.gltf --to Demo --collisions rename
      copies under a new name where a file stands in the way
  corsync import project --to Demo --on-conflict ask
      asks about each file that was changed here and in the cloud cache folder
  corsync import project --exclude '*.bak' --exclude /renders/
      leaves these out, as a .gitignore file would
  corsync import project --within ~/parts --within /srv/library
      follows links into these two folders and the project, nowhere else
  corsync import a.gltf --to Demo --links-only
      copies only what a.gltf links to
  corsync import project --json > result.ndjson
      one JSON object per file, and a summary

A policy for a file in the way, and for one that was changed on both sides, is one of
  stop      copy nothing and list the conflicts (the default)
  keep      use the file that stands there
  rename    copy under a new name: "a (2).gltf"
  replace   put the copy in its place; the old file is kept in the base store
  ask       at a terminal: show both and ask (--on-conflict only, for both cases))";

const NamedValues<CollisionPolicy> Policies = {{"stop", CollisionPolicy::Stop},
                                               {"keep", CollisionPolicy::Keep},
                                               {"rename", CollisionPolicy::Rename},
                                               {"replace", CollisionPolicy::Replace}};

QStringList TypesIn(const QString& list)
{
    QStringList types;
    for (const QString& type : list.split(u','))
        types.append(type.trimmed());
    types.removeAll(QString());
    return types;
}

} // namespace

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
    AddPlaces(app, m_import.places);
    AddWhat(app);
    AddWhatComesAlong(app);
    AddWhatIsDoneAgain(app);
    AddFlush(app);
    AddDecisions(app);
    AddProgress(app, m_import.progress);
    AddCommonOptions(app);
    app.footer(Examples);
}

void CommandLine::AddWhat(CLI::App& app)
{
    Jobs::ImportRequest& request = m_import.request;
    const std::string group = "What";
    app.add_flag("-n,--dry-run", m_import.dryRun, "Print what would happen and do nothing")
        ->group(group);
    app.add_flag("--move", request.move,
                 "Delete each given source once its copy and all that it links are in order")
        ->group(group);
    AddRepeated(app, "--exclude", request.exclude,
                "Leave out what matches, in the notation of .gitignore files; may be given several "
                "times")
        ->type_name("PATTERN")
        ->group(group);
    app.add_flag("--prune", request.prune,
                 "Put copies whose source is gone, or that nothing links any more, into the base "
                 "store")
        ->group(group);
}

void CommandLine::AddWhatComesAlong(CLI::App& app)
{
    Jobs::ImportRequest& request = m_import.request;
    const std::string group = "Which links are followed";
    app.add_flag("--links-only", request.linksOnly, "Copy only what the sources link to")
        ->group(group);
    app.add_flag("--direct-links-only", request.directLinksOnly,
                 "Do not follow the links of linked files")
        ->group(group);
    // Split here: CLI11 would take the next argument for a list that names nothing, such as ",".
    app.add_option_function<std::string>(
           "--types",
           [&request](const std::string& list) { request.fileTypes = TypesIn(Text(list)); },
           "Extensions whose links are followed, such as gltf,glb (default: all)")
        ->type_name("LIST")
        ->group(group);
    AddRepeated(
        app, "--within", request.within,
        "Bring linked files from this folder and the sources only, also when it is one that "
        "is refused otherwise; may be given several times")
        ->type_name("DIR")
        ->group(group);
    app.add_flag("--self-contained", request.selfContained,
                 "Bring everything below the target, also what another import brought already")
        ->group(group);
}

void CommandLine::AddWhatIsDoneAgain(CLI::App& app)
{
    Jobs::ImportRequest& request = m_import.request;
    const std::string group = "What counts as changed";
    app.add_flag("--checksum", request.checksum, "Compare content, not times")->group(group);
    app.add_flag("--force", request.force, "Copy also what is unchanged")->group(group);
    app.add_flag("--reread", request.reread, "Read links again, also of files that are unchanged")
        ->group(group);
}

void CommandLine::AddFlush(CLI::App& app)
{
    app.add_flag_callback(
           "--no-flush", [this] { m_import.request.flush = false; },
           "Do not wait for the disk: quicker, and a power cut may take back what was imported")
        ->group("What");
}

void CommandLine::AddDecisions(CLI::App& app)
{
    AddPolicy(app, "--collisions", m_collisions, "stop (default), keep, rename or replace");
    m_selectedOption = AddPolicy(app, "--selected-collisions", m_import.request.selectedCollisions,
                                 "... for given files only");
    m_linkedOption = AddPolicy(app, "--linked-collisions", m_import.request.linkedCollisions,
                               "... for linked files only");
    CLI::Option* option =
        app.add_option("--on-conflict", m_onConflict,
                       "stop (default), keep, replace, rename or ask, for files whose source and "
                       "copy both changed")
            ->type_name("POLICY")
            ->group("Files in the way, and files changed on both sides");
    TakesOneOf<OnConflict>(option, {{"stop", OnConflict::Stop},
                                    {"keep", OnConflict::Keep},
                                    {"replace", OnConflict::Replace},
                                    {"rename", OnConflict::Rename},
                                    {"ask", OnConflict::Ask}});
}

CLI::Option* CommandLine::AddPolicy(CLI::App& app, const std::string& name, CollisionPolicy& policy,
                                    const std::string& help)
{
    CLI::Option* option = app.add_option(name, policy, help)
                              ->type_name("POLICY")
                              ->group("Files in the way, and files changed on both sides");
    TakesOneOf(option, Policies);
    return option;
}

ImportOptions CommandLine::ParsedImport() const
{
    ImportOptions parsed = m_import;
    if (m_selectedOption->empty())
        parsed.request.selectedCollisions = m_collisions;
    if (m_linkedOption->empty())
        parsed.request.linkedCollisions = m_collisions;
    parsed.request.onConflict = RequestOf(m_onConflict);
    parsed.asks = m_onConflict == OnConflict::Ask;
    return parsed;
}

ConflictAnswer CommandLine::RequestOf(OnConflict wanted)
{
    switch (wanted) {
    case OnConflict::Stop:
    case OnConflict::Ask:
        return ConflictAnswer::Stop;
    case OnConflict::Keep:
        return ConflictAnswer::Keep;
    case OnConflict::Replace:
        return ConflictAnswer::Replace;
    case OnConflict::Rename:
        return ConflictAnswer::Rename;
    }
    return ConflictAnswer::Stop;
}

} // namespace Halvern::Cli
