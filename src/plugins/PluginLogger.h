// SPDX-License-Identifier: Apache-2.0

#pragma once

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

    void LogFatal(const SyncPlugin::WideChar* message) override;
    void LogError(const SyncPlugin::WideChar* message) override;
    void LogWarn(const SyncPlugin::WideChar* message) override;
    void LogInfo(const SyncPlugin::WideChar* message) override;
    void LogDebug(const SyncPlugin::WideChar* message) override;
    void LogTrace(const SyncPlugin::WideChar* message) override;

private:
    log4cplus::Logger m_logger;
};

/// What a layout gets with a call; it must live as long as the call. Its plug-ins log as
/// "SyncPlugin".
class FileLayoutContext : public SyncPlugin::IFileLayoutContext
{
public:
    FileLayoutContext();
    ~FileLayoutContext() override;
    SyncPlugin::IPluginLogger* GetLogger() override;

private:
    std::shared_ptr<PluginLogger> m_logger;
};

/// What a resolver gets with a call; it must live as long as the call. Its plug-ins log as
/// "ResolverPlugin".
class FileLinkResolverContext : public SyncPlugin::IFileLinkResolverContext
{
public:
    FileLinkResolverContext();
    ~FileLinkResolverContext() override;
    SyncPlugin::IPluginLogger* GetLogger() override;

private:
    std::shared_ptr<PluginLogger> m_logger;
};

} // namespace Halvern::FileLink
