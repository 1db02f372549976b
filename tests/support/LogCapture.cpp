// SPDX-License-Identifier: Apache-2.0

#include "LogCapture.h"

#include <log4cplus/appender.h>
#include <log4cplus/nullappender.h>
#include <log4cplus/spi/loggingevent.h>

namespace Halvern::Test {

namespace {

QString FromLog(const log4cplus::tstring& text)
{
#ifdef UNICODE
    return QString::fromStdWString(text);
#else
    return QString::fromStdString(text);
#endif
}

log4cplus::tstring ToLog(const QString& text)
{
#ifdef UNICODE
    return text.toStdWString();
#else
    return text.toStdString();
#endif
}

QString LevelName(int level)
{
    return FromLog(log4cplus::getLogLevelManager().toString(level));
}

// Without an appender log4cplus complains on the terminal.
const bool rootIsSilent = [] {
    log4cplus::Logger::getRoot().addAppender(
        log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    return true;
}();

} // namespace

struct LogCapture::Sink : log4cplus::Appender
{
    ~Sink() override { destructorImpl(); }
    void close() override { closed = true; }
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        records.append({FromLog(event.getLoggerName()), event.getLogLevel(),
                        FromLog(event.getMessage()), FromLog(event.getFile()),
                        FromLog(event.getFunction())});
    }

    QList<LogRecord> records;
};

LogCapture::LogCapture(int level)
    : m_appender(new Sink), m_sink(static_cast<Sink*>(m_appender.get()))
{
    for (const char* name : {"CorsyncFileLink", "SyncPlugin", "ResolverPlugin"}) {
        log4cplus::Logger logger = log4cplus::Logger::getInstance(ToLog(QString::fromLatin1(name)));
        m_saved.push_back({logger, logger.getLogLevel(), logger.getAdditivity()});
        logger.setLogLevel(level);
        logger.setAdditivity(false);
        logger.addAppender(m_appender);
    }
}

LogCapture::~LogCapture()
{
    for (Saved& saved : m_saved) {
        saved.logger.removeAppender(m_appender);
        saved.logger.setLogLevel(saved.level);
        saved.logger.setAdditivity(saved.additive);
    }
}

void LogCapture::SetLevel(const QString& logger, int level)
{
    log4cplus::Logger::getInstance(ToLog(logger)).setLogLevel(level);
}

QList<LogRecord> LogCapture::Records() const
{
    return m_sink->records;
}

QStringList LogCapture::Lines(const QString& logger) const
{
    QStringList lines;
    for (const LogRecord& record : std::as_const(m_sink->records))
        if (logger.isEmpty() || record.logger == logger)
            lines.append(LevelName(record.level) + u' ' + record.text);
    return lines;
}

qsizetype LogCapture::Count(const QString& line) const
{
    return Lines().count(line);
}

void LogCapture::Clear()
{
    m_sink->records.clear();
}

} // namespace Halvern::Test
