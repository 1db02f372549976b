// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <log4cplus/logger.h>

#include <vector>

namespace Halvern::Test {

struct LogRecord
{
    QString logger;
    int level;
    QString text;
    /// Source file name and function signature as written into the record.
    QString file;
    QString function;
};

/// Collects what is written to the module's logger and those of plug-ins while it lives. Log levels
/// go back to what they were afterwards.
class LogCapture
{
public:
    /// Everything from `level` up is enabled and collected.
    explicit LogCapture(int level = log4cplus::TRACE_LOG_LEVEL);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Changes the enabled level of one logger, for example "ResolverPlugin".
    void SetLevel(const QString& logger, int level);
    QList<LogRecord> Records() const;
    /// The records as "INFO text"; with a logger's name only its records.
    QStringList Lines(const QString& logger = {}) const;
    /// How many records hold exactly this line ("INFO text").
    qsizetype Count(const QString& line) const;
    bool Has(const QString& line) const { return Count(line) > 0; }
    void Clear();

private:
    struct Sink;
    struct Saved
    {
        log4cplus::Logger logger;
        int level;
        bool additive;
    };
    log4cplus::SharedAppenderPtr m_appender;
    Sink* m_sink;
    std::vector<Saved> m_saved;
};

} // namespace Halvern::Test
