// SPDX-License-Identifier: Apache-2.0

#include "plugins/PluginLogger.h"

#include "FileTree.h"
#include "LogCapture.h"
#include "plugins/LinkRecords.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncPlugin::IPluginLogger;

const QString ResolverName = u"ResolverPlugin"_s;
const QString LayoutName = u"SyncPlugin"_s;

WideString Message(const char* text)
{
    return ToWideString(QString::fromUtf8(text));
}

TEST(PluginLogger, EachMethodWritesAtItsLevelUnderItsOwnSignature)
{
    using Method = void (IPluginLogger::*)(const Halvern::SyncPlugin::WideChar*);
    struct Row
    {
        const char* name;
        Method method;
        int level;
    };
    const Row rows[] = {
        {"LogFatal", &IPluginLogger::LogFatal, 50000},
        {"LogError", &IPluginLogger::LogError, 40000},
        {"LogWarn", &IPluginLogger::LogWarn, 30000},
        {"LogInfo", &IPluginLogger::LogInfo, 20000},
        {"LogDebug", &IPluginLogger::LogDebug, 10000},
        {"LogTrace", &IPluginLogger::LogTrace, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        LogCapture log;
        FileLinkResolverContext context;
        (context.GetLogger()->*row.method)(Message("a message").c_str());
        ASSERT_EQ(log.Records().size(), 1);
        const LogRecord record = log.Records().first();
        EXPECT_EQ(record.logger, ResolverName);
        EXPECT_EQ(record.level, row.level);
        EXPECT_EQ(record.text, u"a message"_s);
        EXPECT_EQ(record.file, u"FileLinkManagerImp.cpp"_s);
        EXPECT_TRUE(
            record.function.contains(u"PluginLogger::%1("_s.arg(QString::fromLatin1(row.name))))
            << record.function.toStdString();
    }
}

TEST(PluginLogger, LayoutsLogAsSyncPluginAndResolversAsResolverPlugin)
{
    LogCapture log;
    FileLayoutContext layout;
    FileLinkResolverContext resolver;
    layout.GetLogger()->LogInfo(Message("from a layout").c_str());
    resolver.GetLogger()->LogInfo(Message("from a resolver").c_str());
    EXPECT_EQ(log.Lines(LayoutName), QStringList{u"INFO from a layout"_s});
    EXPECT_EQ(log.Lines(ResolverName), QStringList{u"INFO from a resolver"_s});
    EXPECT_EQ(log.Lines(u"CorsyncFileLink"_s), QStringList());
}

TEST(PluginLogger, AWarningWritesNothingWhenItsLoggerIsDisabledForWarnings)
{
    LogCapture log;
    log.SetLevel(ResolverName, log4cplus::ERROR_LOG_LEVEL);
    FileLinkResolverContext context;
    context.GetLogger()->LogWarn(Message("unheard").c_str());
    EXPECT_EQ(log.Lines(), QStringList());
    context.GetLogger()->LogError(Message("heard").c_str());
    EXPECT_EQ(log.Lines(), QStringList{u"ERROR heard"_s});
}

TEST(PluginLogger, MessagesAreWrittenAsTheyAre)
{
    LogCapture log;
    FileLayoutContext context;
    context.GetLogger()->LogInfo(Message("100 %1 \"%s\" ü \n second line").c_str());
    ASSERT_EQ(log.Records().size(), 1);
    EXPECT_EQ(log.Records().first().text, u"100 %1 \"%s\" ü \n second line"_s);
}

TEST(PluginLogger, TheLoggerOfAContextStaysTheSame)
{
    FileLayoutContext layout;
    FileLinkResolverContext resolver;
    EXPECT_EQ(layout.GetLogger(), layout.GetLogger());
    EXPECT_EQ(resolver.GetLogger(), resolver.GetLogger());
}

} // namespace
