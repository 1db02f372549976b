// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

#include <QtCore/QIODevice>
#include <QtCore/QList>

#include <log4cplus/appender.h>

#include <memory>

namespace Halvern::Cli {

/// log4cplus as the user wants it, for as long as the object lives: lines on standard error and in
/// the log file.
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

    void AddLineWriter(std::unique_ptr<QIODevice> device, int threshold);
    void Add(log4cplus::SharedAppenderPtr appender);

    QList<log4cplus::SharedAppenderPtr> m_appenders;
};

} // namespace Halvern::Cli
