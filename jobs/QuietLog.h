// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>

#include <array>

namespace Halvern::Jobs {

/// Those that the module and plug-ins write to.
std::array<log4cplus::Logger, 3> JobLoggers();

/// While it lives log4cplus does not complain on standard error that nobody has set up a log for
/// the module and the plug-ins: their lines end in an appender that drops them. A host that sets up
/// a log, before or after, has every line in it all the same.
class QuietLog
{
public:
    QuietLog();
    ~QuietLog();
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

private:
    log4cplus::SharedAppenderPtr m_end;
};

} // namespace Halvern::Jobs
