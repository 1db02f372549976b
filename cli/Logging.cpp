// SPDX-License-Identifier: Apache-2.0

#include "Logging.h"

#include "Text.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <algorithm>
#include <cstdio>

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

std::unique_ptr<QIODevice> OpenLogFile(const QString& path)
{
    auto file = std::make_unique<QFile>(path);
    // Unbuffered, so that the last line before a crash is in the file.
    if (!file->open(QFile::WriteOnly | QFile::Append | QFile::Unbuffered))
        throw UsageError(
            QStringLiteral("cannot write the log file %1: %2").arg(path, file->errorString()));
    return file;
}

std::unique_ptr<QIODevice> OpenStandardError()
{
    auto file = std::make_unique<QFile>();
    if (!file->open(stderr, QFile::WriteOnly | QFile::Unbuffered))
        return nullptr;
    return file;
}

} // namespace

class LogSetup::LineWriter : public log4cplus::Appender
{
public:
    explicit LineWriter(std::unique_ptr<QIODevice> device) : m_device(std::move(device)) {}
    ~LineWriter() override { destructorImpl(); }
    void close() override
    {
        m_device->close();
        closed = true;
    }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        const QString line = QStringLiteral("%1 %2 %3 %4\n")
                                 .arg(QDateTime::currentDateTime().toString(Qt::ISODateWithMs),
                                      LevelName(event.getLogLevel()), Text(event.getLoggerName()),
                                      Text(event.getMessage()));
        m_device->write(line.toUtf8());
    }

private:
    std::unique_ptr<QIODevice> m_device;
};

LogSetup::LogSetup(const LogOptions& options)
{
    std::unique_ptr<QIODevice> file = options.file.isEmpty() ? nullptr : OpenLogFile(options.file);
    const int fileLevel = file ? options.fileLevel : log4cplus::OFF_LOG_LEVEL;
    const int screenLevel = ScreenLevel(options.verbosity);
    log4cplus::Logger::getRoot().setLogLevel(std::min(fileLevel, screenLevel));
    if (file)
        AddLineWriter(std::move(file), fileLevel);
    if (screenLevel != log4cplus::OFF_LOG_LEVEL)
        AddLineWriter(OpenStandardError(), screenLevel);
}

LogSetup::~LogSetup()
{
    for (const log4cplus::SharedAppenderPtr& appender : std::as_const(m_appenders))
        log4cplus::Logger::getRoot().removeAppender(appender);
}

void LogSetup::AddLineWriter(std::unique_ptr<QIODevice> device, int threshold)
{
    if (!device)
        return;
    log4cplus::SharedAppenderPtr writer(new LineWriter(std::move(device)));
    writer->setThreshold(threshold);
    Add(writer);
}

void LogSetup::Add(log4cplus::SharedAppenderPtr appender)
{
    log4cplus::Logger::getRoot().addAppender(appender);
    m_appenders.append(appender);
}

} // namespace Halvern::Cli
