// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <log4cplus/logger.h>

#include <functional>

namespace Halvern::Test {

/// While it lives, does something at the moment when the module logs a text that begins so, in the
/// middle of an operation. The level of the text must be enabled.
class AtRecord
{
public:
    AtRecord(const QString& begin, std::function<void()> action);
    ~AtRecord();
    AtRecord(const AtRecord&) = delete;
    AtRecord& operator=(const AtRecord&) = delete;

    /// How often the text was logged.
    int Count() const;

private:
    struct Hook;
    log4cplus::SharedAppenderPtr m_appender;
    Hook* m_hook;
};

} // namespace Halvern::Test
