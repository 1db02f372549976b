// SPDX-License-Identifier: Apache-2.0

#include "QuietLog.h"

#include <log4cplus/nullappender.h>

namespace Halvern::Jobs {

std::array<log4cplus::Logger, 3> JobLoggers()
{
    using log4cplus::Logger;
    return {Logger::getInstance(LOG4CPLUS_TEXT("CorsyncFileLink")),
            Logger::getInstance(LOG4CPLUS_TEXT("SyncPlugin")),
            Logger::getInstance(LOG4CPLUS_TEXT("ResolverPlugin"))};
}

QuietLog::QuietLog() : m_end(new log4cplus::NullAppender)
{
    for (log4cplus::Logger logger : JobLoggers())
        logger.addAppender(m_end);
}

QuietLog::~QuietLog()
{
    for (log4cplus::Logger logger : JobLoggers())
        logger.removeAppender(m_end);
}

} // namespace Halvern::Jobs
