// SPDX-License-Identifier: Apache-2.0

#include "support/Logging.h"

#include <log4cplus/loggingmacros.h>
#include <log4cplus/loglevel.h>

#include <utility>

namespace Halvern::FileLink {

static_assert(log4cplus::FATAL_LOG_LEVEL == LogLevel::Fatal);
static_assert(log4cplus::ERROR_LOG_LEVEL == LogLevel::Error);
static_assert(log4cplus::WARN_LOG_LEVEL == LogLevel::Warn);
static_assert(log4cplus::INFO_LOG_LEVEL == LogLevel::Info);
static_assert(log4cplus::DEBUG_LOG_LEVEL == LogLevel::Debug);
static_assert(log4cplus::TRACE_LOG_LEVEL == LogLevel::Trace);

namespace {

constexpr char LogSourceFile[] = "InternalServices.cpp";

// Made when the module is loaded, before any exported function can run.
const log4cplus::Logger moduleLogger =
    log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("CorsyncFileLink"));

log4cplus::tstring ToLogString(const QString& text)
{
#ifdef UNICODE
    return text.toStdWString();
#else
    return text.toStdString();
#endif
}

bool IsKnownLevel(int level)
{
    return level == LogLevel::Info || level == LogLevel::Warn || level == LogLevel::Error ||
           level == LogLevel::Fatal || level == LogLevel::Debug || level == LogLevel::Trace;
}

} // namespace

const log4cplus::Logger& ModuleLogger()
{
    return moduleLogger;
}

void WriteLogLine(const log4cplus::Logger& logger, int level, const QString& text, const char* file,
                  int line, const char* function)
{
    log4cplus::tostringstream& stream = log4cplus::detail::get_macro_body_oss();
    stream << ToLogString(text);
    log4cplus::detail::macro_forced_log(logger, level, stream.str(), file, line, function);
}

LogFinally::LogFinally(const log4cplus::Logger* logger, int level, QString message)
    : m_logger(logger), m_level(level), m_message(std::move(message))
{}

LogFinally::~LogFinally()
{
    // A line that cannot be written must not end the process, least of all while a stage ends with
    // an exception.
    try {
        Log();
    } catch (...) {
    }
}

void LogFinally::Log()
{
    if (!m_logger || m_message.isEmpty())
        return;
    if (IsKnownLevel(m_level))
        FILELINK_LOG_TO(*m_logger, m_level, m_message);
    m_message.clear();
}

} // namespace Halvern::FileLink
