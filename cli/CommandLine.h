// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

#include <CLI/CLI.hpp>

namespace Halvern::Cli {

/// The command line as CLI11 knows it, writing into options as it parses. The application is not
/// moved: its options hold references to the members.
class CommandLine
{
public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Throws CLI::ParseError.
    Options Parse(const QStringList& arguments);
    const CLI::App& App() const { return m_app; }

private:
    /// What `--on-conflict` takes.
    enum class OnConflict
    {
        Stop,
        Keep,
        Replace,
        Rename,
        Ask,
    };

    CLI::Option* AddText(CLI::App& app, const std::string& name, QString& value,
                         const std::string& help);
    CLI::Option* AddTexts(CLI::App& app, const std::string& name, QStringList& values,
                          const std::string& help);
    /// An option that takes one value each time it is given.
    CLI::Option* AddRepeated(CLI::App& app, const std::string& name, QStringList& values,
                             const std::string& help);
    CLI::Option* AddPolicy(CLI::App& app, const std::string& name, Jobs::CollisionPolicy& policy,
                           const std::string& help);
    void AddCommonOptions(CLI::App& app);
    void AddPlaces(CLI::App& app, Jobs::Places& places);
    void AddProgress(CLI::App& app, ProgressMode& mode);
    void AddWhat(CLI::App& app);
    void AddWhatComesAlong(CLI::App& app);
    void AddWhatIsDoneAgain(CLI::App& app);
    void AddDecisions(CLI::App& app);
    void AddImport();
    void AddRetry();
    void AddVersions();
    void AddRestore();
    void AddDoctor();
    void AddLinks();
    void AddPlugins();
    ImportOptions ParsedImport() const;
    static Jobs::ConflictAnswer RequestOf(OnConflict wanted);

    CLI::App m_app;
    CLI::App* m_importCommand = nullptr;
    CLI::App* m_retryCommand = nullptr;
    CLI::App* m_versionsCommand = nullptr;
    CLI::App* m_restoreCommand = nullptr;
    CLI::App* m_doctorCommand = nullptr;
    CLI::App* m_linksCommand = nullptr;
    CLI::Option* m_selectedOption = nullptr;
    CLI::Option* m_linkedOption = nullptr;
    Jobs::CollisionPolicy m_collisions = Jobs::CollisionPolicy::Stop;
    OnConflict m_onConflict = OnConflict::Stop;
    CommonOptions m_common;
    ImportOptions m_import;
    RetryOptions m_retry;
    VersionsOptions m_versions;
    RestoreOptions m_restore;
    DoctorOptions m_doctor;
    LinksOptions m_links;
    PluginsOptions m_plugins;
    bool m_noLoad = false;
};

} // namespace Halvern::Cli
