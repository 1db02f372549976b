// SPDX-License-Identifier: Apache-2.0

#include "LogCapture.h"
#include "support/Logging.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

constexpr char LogSourceFile[] = "SomeSource.cpp";

const QString ModuleName = u"CorsyncFileLink"_s;

class Logging : public ::testing::Test
{
protected:
    QString Message()
    {
        ++built;
        return u"text"_s;
    }

    LogCapture log;
    int built = 0;
};

struct Writer
{
    static void Write(int level) { FILELINK_LOG(level, u"text"_s); }
};

TEST_F(Logging, GoesToTheLoggerNamedAfterTheModule)
{
    FILELINK_LOG(LogLevel::Info, u"text"_s);
    ASSERT_EQ(log.Records().size(), 1);
    EXPECT_EQ(log.Records().first().logger, ModuleName);
    EXPECT_EQ(ModuleLogger().getName(), LOG4CPLUS_TEXT("CorsyncFileLink"));
}

TEST_F(Logging, WritesEachOfTheSixLevels)
{
    for (const int level : {50000, 40000, 30000, 20000, 10000, 0})
        FILELINK_LOG(level, QString::number(level));
    EXPECT_EQ(log.Lines(), (QStringList{u"FATAL 50000"_s, u"ERROR 40000"_s, u"WARN 30000"_s,
                                        u"INFO 20000"_s, u"DEBUG 10000"_s, u"TRACE 0"_s}));
}

TEST_F(Logging, NamesTheSourceFileThatTheTranslationUnitStatesAndTheWholeSignature)
{
    Writer::Write(LogLevel::Warn);
    ASSERT_EQ(log.Records().size(), 1);
    EXPECT_EQ(log.Records().first().file, u"SomeSource.cpp"_s);
    EXPECT_TRUE(log.Records().first().function.contains(u"Writer::Write(int)"_s))
        << log.Records().first().function.toStdString();
}

TEST_F(Logging, BuildsNoTextForADisabledLevel)
{
    log.SetLevel(ModuleName, LogLevel::Warn);
    FILELINK_LOG(LogLevel::Info, Message());
    FILELINK_LOG(LogLevel::Debug, Message());
    FILELINK_LOG(LogLevel::Trace, Message());
    EXPECT_EQ(built, 0);
    EXPECT_EQ(log.Lines(), QStringList());
    FILELINK_LOG(LogLevel::Warn, Message());
    EXPECT_EQ(built, 1);
}

TEST_F(Logging, BuildsTheTextOnceForAnEnabledLevel)
{
    FILELINK_LOG(LogLevel::Trace, Message());
    EXPECT_EQ(built, 1);
    EXPECT_EQ(log.Lines(), QStringList{u"TRACE text"_s});
}

TEST_F(Logging, TakesTextsAsTheyAre)
{
    const QString text = u"100% %1 \u00e4\u4e2d\U0001f600 \"x\"\n"_s;
    FILELINK_LOG(LogLevel::Info, text);
    FILELINK_LOG(LogLevel::Info, QString());
    EXPECT_EQ(log.Lines(), (QStringList{u"INFO "_s + text, u"INFO "_s}));
}

TEST_F(Logging, WorksWhileAnotherLineIsBuilt)
{
    const auto inner = [] {
        FILELINK_LOG(LogLevel::Info, u"inner"_s);
        return u"outer"_s;
    };
    FILELINK_LOG(LogLevel::Info, inner());
    EXPECT_EQ(log.Lines(), (QStringList{u"INFO inner"_s, u"INFO outer"_s}));
}

TEST_F(Logging, IsOneStatementInABranch)
{
    if (built > 0)
        FILELINK_LOG(LogLevel::Info, u"yes"_s);
    else
        FILELINK_LOG(LogLevel::Info, u"no"_s);
    EXPECT_EQ(log.Lines(), QStringList{u"INFO no"_s});
}

TEST_F(Logging, GoesToAnyLogger)
{
    const log4cplus::Logger plugin =
        log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("ResolverPlugin"));
    FILELINK_LOG_TO(plugin, LogLevel::Error, u"text"_s);
    EXPECT_EQ(log.Lines(u"ResolverPlugin"_s), QStringList{u"ERROR text"_s});
    EXPECT_EQ(log.Lines(ModuleName), QStringList());
}

using ClosingLine = Logging;

TEST_F(ClosingLine, IsWrittenAtTheEndOfTheScope)
{
    {
        const LogFinally closing(&ModuleLogger(), LogLevel::Info, u"Finished"_s);
        FILELINK_LOG(LogLevel::Info, u"Begin"_s);
        EXPECT_EQ(log.Lines().size(), 1);
    }
    EXPECT_EQ(log.Lines(), (QStringList{u"INFO Begin"_s, u"INFO Finished"_s}));
    EXPECT_EQ(log.Records().last().file, u"InternalServices.cpp"_s);
    EXPECT_TRUE(log.Records().last().function.contains(u"LogFinally::Log"_s));
}

TEST_F(ClosingLine, IsWrittenOnAnEarlyReturnAndOnAnException)
{
    const auto stage = [](int way) {
        const LogFinally closing(&ModuleLogger(), LogLevel::Info, QString::number(way));
        if (way == 1)
            return;
        throw std::runtime_error("stop");
    };
    stage(1);
    EXPECT_THROW(stage(2), std::runtime_error);
    EXPECT_EQ(log.Lines(), (QStringList{u"INFO 1"_s, u"INFO 2"_s}));
}

TEST_F(ClosingLine, WithoutTextIsNotWritten)
{
    {
        const LogFinally closing(&ModuleLogger(), LogLevel::Info, QString());
    }
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(ClosingLine, WithoutLoggerIsNotWritten)
{
    {
        const LogFinally closing(nullptr, LogLevel::Info, u"Finished"_s);
    }
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(ClosingLine, WrittenByHandIsWrittenOnce)
{
    {
        LogFinally closing(&ModuleLogger(), LogLevel::Info, u"Finished"_s);
        closing.Log();
        closing.Log();
        EXPECT_EQ(log.Lines(), QStringList{u"INFO Finished"_s});
    }
    EXPECT_EQ(log.Lines(), QStringList{u"INFO Finished"_s});
}

TEST_F(ClosingLine, IsWrittenAtEachOfTheSixLevels)
{
    for (const int level : {50000, 40000, 30000, 20000, 10000, 0})
        const LogFinally closing(&ModuleLogger(), level, QString::number(level));
    EXPECT_EQ(log.Lines(), (QStringList{u"FATAL 50000"_s, u"ERROR 40000"_s, u"WARN 30000"_s,
                                        u"INFO 20000"_s, u"DEBUG 10000"_s, u"TRACE 0"_s}));
}

TEST_F(ClosingLine, AtAnyOtherLevelIsNotWritten)
{
    for (const int level : {-1, 1, 19999, 20001, 60000}) {
        LogFinally closing(&ModuleLogger(), level, u"Finished"_s);
        closing.Log();
    }
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(ClosingLine, ForgottenWhileItsLevelWasDisabledDoesNotComeBack)
{
    {
        LogFinally closing(&ModuleLogger(), LogLevel::Info, u"Finished"_s);
        log.SetLevel(ModuleName, LogLevel::Error);
        closing.Log();
        log.SetLevel(ModuleName, LogLevel::Trace);
    }
    EXPECT_EQ(log.Lines(), QStringList());
}

} // namespace
