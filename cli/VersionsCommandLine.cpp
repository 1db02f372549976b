// SPDX-License-Identifier: Apache-2.0

#include "CommandLine.h"

namespace Halvern::Cli {

namespace {

constexpr char FileHelp[] = "A file of the cloud cache folder, relative to the current folder or "
                            "to the cloud cache folder; it need not exist any more";

} // namespace

void CommandLine::AddVersions()
{
    m_versionsCommand = m_app.add_subcommand(
        "versions", "List what a file was before it was replaced, newest first");
    CLI::App& app = *m_versionsCommand;
    AddText(app, "FILE", m_versions.file, FileHelp)->type_name("")->required();
    AddPlaces(app, m_versions.places);
    AddCommonOptions(app);
    app.footer("The base store keeps old versions until it is full; then the oldest go.\n"
               "Exit code 3 when there is neither such a file nor a version of it.");
}

void CommandLine::AddRestore()
{
    m_restoreCommand = m_app.add_subcommand("restore", "Put back an old version of a file");
    CLI::App& app = *m_restoreCommand;
    AddText(app, "FILE", m_restore.file, FileHelp)->type_name("")->required();
    app.add_option("--at", m_restore.number,
                   "Which version, as `versions` numbers them (default: 1, the newest)")
        ->type_name("N")
        ->check(CLI::Range(1, 1'000'000'000).description(""));
    AddText(app, "--output", m_restore.output,
            "Write the version to this file, which must not exist, and leave FILE alone")
        ->type_name("PATH");
    AddPlaces(app, m_restore.places);
    AddCommonOptions(app);
    app.footer(
        "What stands there now is kept as a version first, so that `restore` again undoes\n"
        "it. Exit code 3 when there is no such version, 2 when the place is no good, 1 when\n"
        "it failed; the file is then as it was.");
}

void CommandLine::AddDoctor()
{
    m_doctorCommand = m_app.add_subcommand(
        "doctor", "Look whether all is well with what imports rely on, and change nothing");
    CLI::App& app = *m_doctorCommand;
    AddPlaces(app, m_doctor.places);
    AddCommonOptions(app);
    app.footer(
        "Looks at the settings, the cloud folder and what killed jobs left in it, the whole\n"
        "database, the recorded copies, the base store and every plug-in. Exit code 0\n"
        "without a fault; 1, 2 (settings) or 7 (plug-ins, database) with one.");
}

} // namespace Halvern::Cli
