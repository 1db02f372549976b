// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExitCode.h"

#include "corsync/ImportRequest.h"
#include "corsync/Settings.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>
#include <variant>

namespace Halvern::Cli {

enum class ProgressMode
{
    Auto,
    Always,
    Never,
};

/// How much of the log is wanted, and where.
struct LogOptions
{
    /// Empty: no log file.
    QString file;
    /// log4cplus level of the log file.
    int fileLevel = 20000;
    /// Number of -v: 0 shows no log lines on standard error, then INFO, DEBUG, TRACE.
    int verbosity = 0;
};

/// What every command understands.
struct CommonOptions
{
    LogOptions log;
    bool quiet = false;
    bool json = false;
    QStringList pluginPaths;
    /// "auto", "always" or "never"; empty: as the settings say.
    QString isolate;
};

struct ImportOptions
{
    Jobs::ImportRequest request;
    Jobs::Places places;
    /// Conflicts are shown one by one, and the user says what to do; the request stops at them.
    bool asks = false;
    bool dryRun = false;
    ProgressMode progress = ProgressMode::Auto;
};

struct RetryOptions
{
    /// Empty: the whole cloud cache folder.
    QString folder;
    Jobs::Places places;
    ProgressMode progress = ProgressMode::Auto;
};

struct VersionsOptions
{
    QString file;
    Jobs::Places places;
};

struct RestoreOptions
{
    QString file;
    int number = 1;
    /// Empty: the file itself.
    QString output;
    Jobs::Places places;
};

struct DoctorOptions
{
    Jobs::Places places;
};

struct LinksOptions
{
    QStringList files;
};

struct PluginsOptions
{
    bool load = true;
};

struct Options
{
    CommonOptions common;
    std::variant<ImportOptions, RetryOptions, VersionsOptions, RestoreOptions, DoctorOptions,
                 LinksOptions, PluginsOptions>
        command;
};

/// Either options, or what to print and with which code to end.
struct ParsedCommandLine
{
    std::optional<Options> options;
    ExitCode exitCode = ExitCode::Complete;
    /// For standard output: help and version.
    QString output;
    /// For standard error.
    QString error;
};

/// `arguments` begin with the program's name.
ParsedCommandLine ParseCommandLine(const QStringList& arguments);

} // namespace Halvern::Cli
