// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

#include "syncservices/ServicesSettings.h"

namespace Halvern::Cli {

/// The settings of an import: the settings file with what the command line says instead. No file is
/// touched when the command line gives both folder and database. A dry run writes no settings file
/// and no new database. Throws CommandError(Usage).
SyncServices::ServicesSettings ImportSettings(const ImportOptions& options);
/// Settings that leave no trace: everything is in memory or in `folder`, which must exist.
SyncServices::ServicesSettings ThrowawaySettings(const QString& folder);
/// The database that belongs to a folder given with --cloud-folder alone: one per folder, in the
/// user's data folder.
QString DatabaseForCloudFolder(const QString& cloudFolder);

} // namespace Halvern::Cli
