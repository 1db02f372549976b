// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

#include <QtCore/QList>

#include <log4cplus/appender.h>

namespace Halvern::Cli {

/// log4cplus as the user wants it, for as long as the object lives: lines on standard error and in
/// the log file, one for each record.
class LogSetup
{
public:
    /// Throws UsageError when the log file cannot be written.
    explicit LogSetup(const LogOptions& options);
    ~LogSetup();
    LogSetup(const LogSetup&) = delete;
    LogSetup& operator=(const LogSetup&) = delete;

private:
    class LineWriter;

    void Add(log4cplus::SharedAppenderPtr appender, int threshold);

    QList<log4cplus::SharedAppenderPtr> m_appenders;
};

} // namespace Halvern::Cli
