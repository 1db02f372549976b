// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "plugins/CallProblems.h"
#include "syncplugin/IFileLayout.h"
#include "syncplugin/IFileLinkResolver.h"
#include "syncplugin/IPluginLogger.h"

#include <log4cplus/logger.h>

#include <memory>

namespace Halvern::FileLink {

/// Writes a plug-in's messages, as they are, to a logger of their own.
class PluginLogger final : public SyncPlugin::IPluginLogger
{
public:
    explicit PluginLogger(const SyncPlugin::WideChar* name);
    /// Errors are kept in `problems`, too, which must outlive the logger.
    PluginLogger(const SyncPlugin::WideChar* name, CallProblems* problems);

    void LogFatal(const SyncPlugin::WideChar* message) override;
    void LogError(const SyncPlugin::WideChar* message) override;
    void LogWarn(const SyncPlugin::WideChar* message) override;
    void LogInfo(const SyncPlugin::WideChar* message) override;
    void LogDebug(const SyncPlugin::WideChar* message) override;
    void LogTrace(const SyncPlugin::WideChar* message) override;

private:
    void Keep(const SyncPlugin::WideChar* message);

    log4cplus::Logger m_logger;
    CallProblems* m_problems = nullptr;
};

/// What a layout gets with a call; it must live as long as the call. Its plug-ins log as
/// "SyncPlugin".
class FileLayoutContext : public SyncPlugin::IFileLayoutContext
{
public:
    FileLayoutContext();
    explicit FileLayoutContext(CallProblems problems);
    ~FileLayoutContext() override;
    SyncPlugin::IPluginLogger* GetLogger() override;
    CallProblems& Problems() { return m_problems; }

private:
    CallProblems m_problems;
    std::shared_ptr<PluginLogger> m_logger;
};

/// What a resolver gets with a call; it must live as long as the call. Its plug-ins log as
/// "ResolverPlugin".
class FileLinkResolverContext : public SyncPlugin::IFileLinkResolverContext
{
public:
    FileLinkResolverContext();
    explicit FileLinkResolverContext(CallProblems problems);
    ~FileLinkResolverContext() override;
    SyncPlugin::IPluginLogger* GetLogger() override;
    CallProblems& Problems() { return m_problems; }

private:
    CallProblems m_problems;
    std::shared_ptr<PluginLogger> m_logger;
};

} // namespace Halvern::FileLink
