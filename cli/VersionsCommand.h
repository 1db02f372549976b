// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace Halvern::Cli {

class Console;

/// `corsync versions`. Changes nothing anywhere. Throws Jobs::JobError.
ExitCode RunVersions(const VersionsOptions& options, const CommonOptions& common, Console& console);

/// For people: in local time. For scripts: in UTC.
QString LocalTime(const QDateTime& time);
QString JsonTime(const QDateTime& time);

} // namespace Halvern::Cli
