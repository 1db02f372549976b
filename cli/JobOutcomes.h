// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ImportJob.h"
#include "Logging.h"
#include "Outcome.h"
#include "Report.h"

namespace Halvern::Cli {

/// What a job did to each file, or would have done when it was only planned, in the order of the
/// set, with what the log says about the files that failed. Fills in files, problems and the
/// cancel of the report.
void Describe(const ImportJob& job, const QList<LogRecord>& log, ImportReport& report);

} // namespace Halvern::Cli
