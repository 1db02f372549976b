// SPDX-License-Identifier: Apache-2.0

#include "AliasLog.h"

#include "QuietLog.h"

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <QtCore/QDir>

#include <string>
#include <type_traits>

namespace Halvern::Jobs {

namespace {

using log4cplus::Logger;
using log4cplus::tstring;

// log4cplus has wide strings on Windows, and UTF-8 elsewhere.

[[maybe_unused]] QString FromLog(const std::string& text)
{
    return QString::fromStdString(text);
}

[[maybe_unused]] QString FromLog(const std::wstring& text)
{
    return QString::fromStdWString(text);
}

template <typename String = tstring>
String ToLog(const QString& text)
{
    if constexpr (std::is_same_v<String, std::wstring>)
        return text.toStdWString();
    else
        return text.toStdString();
}

} // namespace

/// Stands for the appenders of a logger and for those above it.
class AliasLog::Forwarder : public log4cplus::Appender
{
public:
    Forwarder(const Logger& logger, Names names)
        : m_logger(logger), m_names(std::move(names)), m_appenders(m_logger.getAllAppenders()),
          m_goesUp(m_logger.getAdditivity())
    {
        m_logger.removeAllAppenders();
        m_logger.setAdditivity(false);
    }
    ~Forwarder() override { destructorImpl(); }
    void Withdraw()
    {
        m_logger.removeAllAppenders();
        for (const log4cplus::SharedAppenderPtr& appender : m_appenders)
            m_logger.addAppender(appender);
        m_logger.setAdditivity(m_goesUp);
    }
    Logger Of() const { return m_logger; }
    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        QString text = FromLog(event.getMessage());
        for (const auto& [path, meant] : std::as_const(m_names)) {
            text.replace(path, meant);
            text.replace(QDir::toNativeSeparators(path), QDir::toNativeSeparators(meant));
        }
        const log4cplus::spi::InternalLoggingEvent told(
            event.getLoggerName(), event.getLogLevel(), ToLog(text),
            FromLog(event.getFile()).toLatin1().constData(), event.getLine(),
            FromLog(event.getFunction()).toLatin1().constData());
        for (const log4cplus::SharedAppenderPtr& appender : m_appenders)
            appender->doAppend(told);
        // Without any the library would say so on standard error.
        if (m_goesUp && !Logger::getRoot().getAllAppenders().empty())
            Logger::getRoot().callAppenders(told);
    }

private:
    Logger m_logger;
    Names m_names;
    log4cplus::SharedAppenderPtrList m_appenders;
    bool m_goesUp;
};

AliasLog::AliasLog(const Names& names)
{
    for (const Logger& logger : JobLoggers()) {
        const auto forwarder = new Forwarder(logger, names);
        m_forwarders.emplace_back(forwarder);
        forwarder->Of().addAppender(m_forwarders.back());
    }
}

AliasLog::~AliasLog()
{
    for (const log4cplus::SharedAppenderPtr& forwarder : m_forwarders)
        static_cast<Forwarder&>(*forwarder).Withdraw();
}

LogSilence::LogSilence()
{
    for (Logger logger : JobLoggers()) {
        m_levels.push_back(logger.getLogLevel());
        logger.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    }
}

LogSilence::~LogSilence()
{
    auto level = m_levels.begin();
    for (Logger logger : JobLoggers())
        logger.setLogLevel(*level++);
}

} // namespace Halvern::Jobs
