// SPDX-License-Identifier: Apache-2.0

#include "isolation/CallWatch.h"
#include "isolation/OwnLibrary.h"
#include "isolation/StubServices.h"

#include "syncplugin/SyncPlugin.h"

#include <stdexcept>

// The library that stands for a plug-in. The job library lays a copy of it under the plug-in's name
// into a folder that is searched first, with a description of what it stands for: the module loads
// it as any other.

namespace Halvern::Isolation {

namespace {

/// One per copy of this library: the process outlives the objects that the module asks for anew
/// with each file, and ends when the library is unloaded.
HostProcess& Host()
{
    static HostProcess host(
        Description::Load(OwnLibraryFile() + QString::fromLatin1(DescriptionSuffix)));
    return host;
}

/// What the plug-in said when its process started, before anybody gave a log.
void Ignore(LogSeverity, const QString&) {}

/// True when the plug-in has a service; false when its factory gave null. Everything else is thrown
/// as the words on why it cannot be used.
bool HasService(Outcome missing)
{
    const Readiness ready = Host().Start(Ignore);
    ThrowAgain(ready.outcome, ready.text);
    if (ready.outcome == Outcome::Unusable)
        throw std::runtime_error(ready.text.toStdString());
    return ready.outcome != missing;
}

/// What the plug-in was built with, so that the module refuses it with its own words. A plug-in
/// that cannot be asked has a better sentence when it is used.
std::uint64_t ContractStamp()
{
    try {
        return Host().Start(Ignore).contractStamp;
    } catch (const HostFailure&) {
        return SyncPlugin::MakeContractStamp(SyncPlugin::OwnContractTerms);
    }
}

class ResolverFactory : public SyncPlugin::IFileLinkResolverFactory
{
public:
    SyncPlugin::IFileLinkResolver* CreateFileLinkResolver() override
    {
        return HasService(Outcome::NoService) ? new StubResolver(Host()) : nullptr;
    }
};

class LayoutFactory : public SyncPlugin::ISyncPluginFactory
{
public:
    SyncPlugin::IFileLayout* CreateFileLayout() override
    {
        return HasService(Outcome::NoService) ? new StubLayout(Host()) : nullptr;
    }
};

} // namespace

} // namespace Halvern::Isolation

SYNCPLUGIN_EXPORT Halvern::SyncPlugin::IFileLinkResolverFactory* CreateFileLinkResolverFactory()
{
    using namespace Halvern::Isolation;
    return HasService(Outcome::NoFactory) ? new ResolverFactory : nullptr;
}

SYNCPLUGIN_EXPORT Halvern::SyncPlugin::ISyncPluginFactory* CreateSyncPluginFactory()
{
    using namespace Halvern::Isolation;
    return HasService(Outcome::NoFactory) ? new LayoutFactory : nullptr;
}

SYNCPLUGIN_EXPORT void SetIsolatedCallWatch(Halvern::Isolation::CallWatch* goesOn)
{
    Halvern::Isolation::HostProcess::SetWatch(goesOn);
}

SYNCPLUGIN_EXPORT std::uint64_t GetSyncPluginContractVersion()
{
    return Halvern::Isolation::ContractStamp();
}
