// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "isolation/HostProcess.h"

#include "syncplugin/SyncPlugin.h"

#include <memory>

namespace Halvern::Isolation {

/// Stands for the resolver of a plug-in that runs in a process of its own.
class StubResolver : public SyncPlugin::IFileLinkResolver
{
public:
    explicit StubResolver(HostProcess& host) : m_host(host) {}

    [[nodiscard]] bool GetFileLinks(const SyncPlugin::WideChar* file,
                                    SyncPlugin::FileLinkInfo** links, int* count,
                                    SyncPlugin::IFileLinkResolverContext* context) override;
    [[nodiscard]] bool RepathFileLinks(const SyncPlugin::WideChar* file,
                                       const SyncPlugin::FileLinkInfo* links, int count,
                                       SyncPlugin::IFileLinkResolverContext* context) override;

private:
    HostProcess& m_host;
};

/// The same for a layout.
class StubLayout : public SyncPlugin::IFileLayout
{
public:
    explicit StubLayout(HostProcess& host) : m_host(host) {}

    [[nodiscard]] bool AssignTargetPaths(SyncPlugin::IFileMapping* mapping,
                                         SyncPlugin::IFileLayoutContext* context) override;

private:
    HostProcess& m_host;
};

/// What left the plug-in as an exception, for the host program's words on exceptions.
void ThrowAgain(Outcome outcome, const QString& text);

} // namespace Halvern::Isolation
