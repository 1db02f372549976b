// SPDX-License-Identifier: Apache-2.0

#include "LogCapture.h"
#include "support/Logging.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

TEST(EmptyClosingLine, IsNotWrittenWhetherItsTextIsNullOrOnlyEmpty)
{
    const LogCapture log;
    {
        const LogFinally null(&ModuleLogger(), LogLevel::Info, QString());
        const LogFinally empty(&ModuleLogger(), LogLevel::Info, u""_s);
    }
    EXPECT_EQ(log.Lines(), QStringList());
}

} // namespace
