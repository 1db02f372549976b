// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <utility>
#include <vector>

#include <log4cplus/appender.h>
#include <log4cplus/loglevel.h>

namespace Halvern::Jobs {

/// While it lives, the log names what people know instead of files that are being made ready: in
/// what the module and plug-ins log, the first of each pair of paths becomes the second.
class AliasLog
{
public:
    using Names = QList<std::pair<QString, QString>>;

    explicit AliasLog(const Names& names);
    ~AliasLog();
    AliasLog(const AliasLog&) = delete;
    AliasLog& operator=(const AliasLog&) = delete;

private:
    class Forwarder;

    std::vector<log4cplus::SharedAppenderPtr> m_forwarders;
};

/// While it lives the module and plug-ins log nothing: what they do is a check, and its result is
/// told in other words.
class LogSilence
{
public:
    LogSilence();
    ~LogSilence();
    LogSilence(const LogSilence&) = delete;
    LogSilence& operator=(const LogSilence&) = delete;

private:
    std::vector<log4cplus::LogLevel> m_levels;
};

} // namespace Halvern::Jobs
