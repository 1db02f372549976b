// SPDX-License-Identifier: Apache-2.0

// A record names the operation that its reader knows, whatever functions it is split into.

#include "LogCapture.h"
#include "RecordLines.h"
#include "support/Logging.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

constexpr char LogSourceFile[] = "SomeSource.cpp";

struct Stage
{
    int built = 0;

    void Run(int level) { LogPart(level, FILELINK_FUNCTION); }

private:
    void LogPart(int level, const char* operation)
    {
        FILELINK_LOG_FOR(operation, level, Text());
        FILELINK_LOG(level, u"in its own name"_s);
    }
    QString Text()
    {
        ++built;
        return u"in the name of the stage"_s;
    }
};

TEST(LoggingOperations, APartOfAnOperationLogsInTheNameOfTheWhole)
{
    const LogCapture log;
    Stage().Run(LogLevel::Warn);
    const QString file = u"SomeSource.cpp"_s;
    const QStringList lines = RecordLines(log);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].endsWith(u"Stage::Run: in the name of the stage"_s))
        << lines[0].toStdString();
    EXPECT_TRUE(lines[1].endsWith(u"Stage::LogPart: in its own name"_s)) << lines[1].toStdString();
    EXPECT_EQ(log.Records()[0].file, file);
}

TEST(LoggingOperations, BuildNoTextForADisabledLevel)
{
    const LogCapture log(log4cplus::WARN_LOG_LEVEL);
    Stage stage;
    stage.Run(LogLevel::Info);
    EXPECT_EQ(stage.built, 0);
    EXPECT_EQ(RecordLines(log), QStringList());
    stage.Run(LogLevel::Error);
    EXPECT_EQ(stage.built, 1);
}

} // namespace
