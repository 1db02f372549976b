// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Export.h"

#include "syncservices/ServicesSettings.h"

#include <QtCore/QString>

namespace Halvern::Jobs {

/// What a session is for.
enum class SessionUse
{
    Import,
    /// Jobs are planned and not executed. Nothing is left behind: no settings file, no new
    /// database, and no cloud cache folder that was not there.
    PlanOnly,
};

/// Which plug-ins run in a process of their own, so that a crash, a loop without an end or a greedy
/// one costs the file at hand and not the job.
enum class PluginIsolationMode
{
    /// Those that do not come with the product.
    Auto,
    Always,
    Never,
};

struct PluginOptions
{
    PluginIsolationMode isolation = PluginIsolationMode::Auto;
    /// How long one call into an isolated plug-in may take, in seconds, and how much memory its
    /// process may have, in bytes. 0: no limit.
    int timeLimit = 120;
    qint64 memoryLimit = qint64(4) << 30;
};

/// The same as the settings have it. Throws JobError(SettingsRefused).
CORSYNCJOBS_EXPORT PluginOptions PluginOptionsOf(const SyncServices::ServicesSettings& settings);

/// Places that a user named. What is empty comes from the settings file.
struct Places
{
    /// Empty: the user's own. Not read, and not made, when both of the others are given.
    QString settingsFile;
    /// A folder other than that of the settings has a database of its own, outside of it.
    QString cloudFolder;
    QString database;
};

/// The settings for a session: the settings file, which is written when it does not exist, with the
/// places given instead. Relative paths are taken from the current folder. Throws
/// JobError(SettingsRefused).
CORSYNCJOBS_EXPORT SyncServices::ServicesSettings ResolveSettings(const Places& places,
                                                                  SessionUse use);

/// The database that belongs to a folder given alone: one per folder, in the user's data folder.
CORSYNCJOBS_EXPORT QString DatabaseForCloudFolder(const QString& cloudFolder);

} // namespace Halvern::Jobs
