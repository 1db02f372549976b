// SPDX-License-Identifier: Apache-2.0

#include "Logging.h"

#include "Masking.h"
#include "Streams.h"
#include "Text.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <algorithm>
#include <functional>
#include <memory>

namespace Halvern::Cli {

namespace {

QString LevelName(int level)
{
    if (level >= log4cplus::FATAL_LOG_LEVEL)
        return QStringLiteral("FATAL");
    if (level >= log4cplus::ERROR_LOG_LEVEL)
        return QStringLiteral("ERROR");
    if (level >= log4cplus::WARN_LOG_LEVEL)
        return QStringLiteral("WARN ");
    if (level >= log4cplus::INFO_LOG_LEVEL)
        return QStringLiteral("INFO ");
    return level >= log4cplus::DEBUG_LOG_LEVEL ? QStringLiteral("DEBUG") : QStringLiteral("TRACE");
}

int ScreenLevel(int verbosity)
{
    if (verbosity <= 0)
        return log4cplus::OFF_LOG_LEVEL;
    if (verbosity == 1)
        return log4cplus::INFO_LOG_LEVEL;
    return verbosity == 2 ? log4cplus::DEBUG_LOG_LEVEL : log4cplus::TRACE_LOG_LEVEL;
}

/// Takes one line with its end.
using LineTaker = std::function<void(const QByteArray&)>;

LineTaker IntoFile(const QString& path)
{
    const auto file = std::make_shared<QFile>(path);
    // Unbuffered, so that the last line before a crash is in the file.
    if (!file->open(QFile::WriteOnly | QFile::Append | QFile::Unbuffered))
        throw UsageError(
            QStringLiteral("cannot write the log file %1: %2").arg(path, file->errorString()));
    return [file](const QByteArray& line) { file->write(line); };
}

} // namespace

class LogSetup::LineWriter : public log4cplus::Appender
{
public:
    explicit LineWriter(LineTaker take) : m_take(std::move(take)) {}
    ~LineWriter() override { destructorImpl(); }
    void close() override
    {
        m_take = {};
        closed = true;
    }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        const QString line = QStringLiteral("%1 %2 %3 %4")
                                 .arg(QDateTime::currentDateTime().toString(Qt::ISODateWithMs),
                                      LevelName(event.getLogLevel()), Text(event.getLoggerName()),
                                      Text(event.getMessage()));
        m_take(Masked(line).toUtf8() + '\n');
    }

private:
    LineTaker m_take;
};

LogSetup::LogSetup(const LogOptions& options)
{
    const LineTaker file = options.file.isEmpty() ? LineTaker() : IntoFile(options.file);
    const int fileLevel = file ? options.fileLevel : log4cplus::OFF_LOG_LEVEL;
    const int screenLevel = ScreenLevel(options.verbosity);
    log4cplus::Logger::getRoot().setLogLevel(std::min(fileLevel, screenLevel));
    if (file)
        Add(log4cplus::SharedAppenderPtr(new LineWriter(file)), fileLevel);
    if (screenLevel != log4cplus::OFF_LOG_LEVEL)
        Add(log4cplus::SharedAppenderPtr(new LineWriter(WriteMessages)), screenLevel);
}

LogSetup::~LogSetup()
{
    for (const log4cplus::SharedAppenderPtr& appender : std::as_const(m_appenders))
        log4cplus::Logger::getRoot().removeAppender(appender);
}

void LogSetup::Add(log4cplus::SharedAppenderPtr appender, int threshold)
{
    appender->setThreshold(threshold);
    log4cplus::Logger::getRoot().addAppender(appender);
    m_appenders.append(appender);
}

} // namespace Halvern::Cli
