// SPDX-License-Identifier: Apache-2.0

#include "plugins/PluginLogger.h"

#include "plugins/LinkRecords.h"
#include "support/Logging.h"

#include <log4cplus/tstring.h>

#include <utility>

namespace Halvern::FileLink {

using SyncPlugin::IPluginLogger;
using SyncPlugin::WideChar;

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

QString ToText(const WideChar* text)
{
    return QString(reinterpret_cast<const QChar*>(text));
}

std::shared_ptr<PluginLogger> MakeLogger(const QString& name, CallProblems& problems)
{
    return std::make_shared<PluginLogger>(ToWideString(name).c_str(), &problems);
}

} // namespace

PluginLogger::PluginLogger(const WideChar* name) : PluginLogger(name, nullptr) {}

PluginLogger::PluginLogger(const WideChar* name, CallProblems* problems)
    : m_logger(
          log4cplus::Logger::getInstance(LOG4CPLUS_STRING_TO_TSTRING(ToText(name).toStdString()))),
      m_problems(problems)
{}

void PluginLogger::Keep(const WideChar* message)
{
    if (m_problems)
        m_problems->Keep(ToText(message));
}

void PluginLogger::LogFatal(const WideChar* message)
{
    FILELINK_LOG_TO(m_logger, LogLevel::Fatal, ToText(message));
    Keep(message);
}

void PluginLogger::LogError(const WideChar* message)
{
    FILELINK_LOG_TO(m_logger, LogLevel::Error, ToText(message));
    Keep(message);
}

void PluginLogger::LogWarn(const WideChar* message)
{
    FILELINK_LOG_TO(m_logger, LogLevel::Warn, ToText(message));
}

void PluginLogger::LogInfo(const WideChar* message)
{
    FILELINK_LOG_TO(m_logger, LogLevel::Info, ToText(message));
}

void PluginLogger::LogDebug(const WideChar* message)
{
    FILELINK_LOG_TO(m_logger, LogLevel::Debug, ToText(message));
}

void PluginLogger::LogTrace(const WideChar* message)
{
    FILELINK_LOG_TO(m_logger, LogLevel::Trace, ToText(message));
}

FileLayoutContext::FileLayoutContext() : FileLayoutContext(CallProblems()) {}

FileLayoutContext::FileLayoutContext(CallProblems problems)
    : m_problems(std::move(problems)),
      m_logger(MakeLogger(QStringLiteral("SyncPlugin"), m_problems))
{}

FileLayoutContext::~FileLayoutContext() = default;

IPluginLogger* FileLayoutContext::GetLogger()
{
    return m_logger.get();
}

FileLinkResolverContext::FileLinkResolverContext() : FileLinkResolverContext(CallProblems()) {}

FileLinkResolverContext::FileLinkResolverContext(CallProblems problems)
    : m_problems(std::move(problems)),
      m_logger(MakeLogger(QStringLiteral("ResolverPlugin"), m_problems))
{}

FileLinkResolverContext::~FileLinkResolverContext() = default;

IPluginLogger* FileLinkResolverContext::GetLogger()
{
    return m_logger.get();
}

} // namespace Halvern::FileLink
