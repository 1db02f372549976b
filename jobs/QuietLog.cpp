// SPDX-License-Identifier: Apache-2.0

#include "QuietLog.h"

#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <array>

namespace Halvern::Jobs {

namespace {

std::array<log4cplus::Logger, 3> Loggers()
{
    using log4cplus::Logger;
    return {Logger::getInstance(LOG4CPLUS_TEXT("CorsyncFileLink")),
            Logger::getInstance(LOG4CPLUS_TEXT("SyncPlugin")),
            Logger::getInstance(LOG4CPLUS_TEXT("ResolverPlugin"))};
}

} // namespace

QuietLog::QuietLog() : m_end(new log4cplus::NullAppender)
{
    for (log4cplus::Logger logger : Loggers())
        logger.addAppender(m_end);
}

QuietLog::~QuietLog()
{
    for (log4cplus::Logger logger : Loggers())
        logger.removeAppender(m_end);
}

} // namespace Halvern::Jobs
