// SPDX-License-Identifier: Apache-2.0

#include "Logging.h"

#include "LogText.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <algorithm>
#include <cstdio>

namespace Halvern::Cli {

namespace {

/// Names of the loggers and of the source file under which plug-ins fail.
constexpr char ModuleLogger[] = "CorsyncFileLink";
constexpr char PluginSource[] = "PluginManager";

/// The copy stage reports a read-only target at INFO; to the user that is a file that failed.
constexpr char ReadOnlyTarget[] = "Copy skipped for file ";

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

LogOrigin OriginOf(const log4cplus::spi::InternalLoggingEvent& event)
{
    if (FromLog(event.getLoggerName()) != QLatin1String(ModuleLogger))
        return LogOrigin::Plugin;
    return FromLog(event.getFile()).startsWith(QLatin1String(PluginSource))
               ? LogOrigin::PluginManager
               : LogOrigin::Module;
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
        throw CommandError(
            ExitCode::Usage,
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

class LogSetup::Collector : public log4cplus::Appender
{
public:
    ~Collector() override { destructorImpl(); }
    void close() override { closed = true; }

    QList<LogRecord> records;

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        const int level = event.getLogLevel();
        QString text = FromLog(event.getMessage());
        if (level < log4cplus::WARN_LOG_LEVEL && !text.startsWith(QLatin1String(ReadOnlyTarget)))
            return;
        records.append({level, OriginOf(event), std::move(text)});
    }
};

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
                                      LevelName(event.getLogLevel()),
                                      FromLog(event.getLoggerName()), FromLog(event.getMessage()));
        m_device->write(line.toUtf8());
    }

private:
    std::unique_ptr<QIODevice> m_device;
};

LogSetup::LogSetup(const LogOptions& options) : m_collector(new Collector)
{
    log4cplus::SharedAppenderPtr collector(m_collector);
    std::unique_ptr<QIODevice> file = options.file.isEmpty() ? nullptr : OpenLogFile(options.file);
    const int fileLevel = file ? options.fileLevel : log4cplus::OFF_LOG_LEVEL;
    const int screenLevel = ScreenLevel(options.verbosity);
    log4cplus::Logger::getRoot().setLogLevel(
        std::min({int(log4cplus::INFO_LOG_LEVEL), fileLevel, screenLevel}));
    Add(collector);
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

const QList<LogRecord>& LogSetup::Records() const
{
    return m_collector->records;
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
