// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExitCode.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>
#include <variant>

namespace Halvern::Cli {

/// What happens to a file whose target is taken.
enum class CollisionPolicy
{
    /// Nothing is copied; the conflicts are listed.
    Stop,
    /// The file that stands there is used as it is.
    Keep,
    /// The file is copied under a new name.
    Rename,
    /// The file takes the place of the one that stands there.
    Replace,
};

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
};

struct ImportOptions
{
    QStringList sources;
    /// As given: below the cloud cache folder, or absolute. Empty: the cloud cache folder itself.
    QString to;
    bool move = false;
    bool linksOnly = false;
    bool directLinksOnly = false;
    CollisionPolicy selectedCollisions = CollisionPolicy::Stop;
    CollisionPolicy linkedCollisions = CollisionPolicy::Stop;
    /// Extensions whose links are followed; empty: all.
    QStringList types;
    QString cloudFolder;
    QString database;
    QString settings;
    bool dryRun = false;
    ProgressMode progress = ProgressMode::Auto;
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
    std::variant<ImportOptions, LinksOptions, PluginsOptions> command;
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
