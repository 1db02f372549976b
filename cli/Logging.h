// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

#include <QtCore/QIODevice>
#include <QtCore/QList>
#include <QtCore/QString>

#include <log4cplus/appender.h>

#include <memory>

namespace Halvern::Cli {

/// Who wrote a log record.
enum class LogOrigin
{
    Module,
    /// The module, about a plug-in.
    PluginManager,
    Plugin,
};

/// A log record that may tell why something failed.
struct LogRecord
{
    int level = 0;
    LogOrigin origin = LogOrigin::Module;
    QString text;

    bool IsAboutPlugin() const { return origin != LogOrigin::Module; }
};

/// log4cplus as the host wants it, for as long as the object lives: lines on standard error and in
/// the log file as the options say, and always a collection of what went wrong.
class LogSetup
{
public:
    /// Throws CommandError(Usage) when the log file cannot be written.
    explicit LogSetup(const LogOptions& options);
    ~LogSetup();
    LogSetup(const LogSetup&) = delete;
    LogSetup& operator=(const LogSetup&) = delete;

    /// What was logged since the start: warnings and worse, and what the copy stage passed over.
    const QList<LogRecord>& Records() const;

private:
    class Collector;
    class LineWriter;

    void AddLineWriter(std::unique_ptr<QIODevice> device, int threshold);
    void Add(log4cplus::SharedAppenderPtr appender);

    Collector* m_collector;
    QList<log4cplus::SharedAppenderPtr> m_appenders;
};

} // namespace Halvern::Cli
