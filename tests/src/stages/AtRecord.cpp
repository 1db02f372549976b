// SPDX-License-Identifier: Apache-2.0

#include "AtRecord.h"

#include <log4cplus/appender.h>
#include <log4cplus/spi/loggingevent.h>

#include <utility>

namespace Halvern::Test {

namespace {

log4cplus::Logger ModuleLogger()
{
    return log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("CorsyncFileLink"));
}

QString TextOf(const log4cplus::spi::InternalLoggingEvent& event)
{
#ifdef UNICODE
    return QString::fromStdWString(event.getMessage());
#else
    return QString::fromStdString(event.getMessage());
#endif
}

} // namespace

struct AtRecord::Hook : log4cplus::Appender
{
    ~Hook() override { destructorImpl(); }
    void close() override { closed = true; }
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        if (!TextOf(event).startsWith(begin))
            return;
        ++count;
        action();
    }

    QString begin;
    std::function<void()> action;
    int count = 0;
};

AtRecord::AtRecord(const QString& begin, std::function<void()> action)
    : m_appender(new Hook), m_hook(static_cast<Hook*>(m_appender.get()))
{
    m_hook->begin = begin;
    m_hook->action = std::move(action);
    ModuleLogger().addAppender(m_appender);
}

AtRecord::~AtRecord()
{
    ModuleLogger().removeAppender(m_appender);
}

int AtRecord::Count() const
{
    return m_hook->count;
}

} // namespace Halvern::Test
