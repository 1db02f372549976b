// SPDX-License-Identifier: Apache-2.0

#include "isolation/HostPlugin.h"

#include <QtCore/QFileInfo>

#include <exception>

namespace Halvern::Isolation {

using SyncPlugin::IFileLayout;
using SyncPlugin::IFileLinkResolver;
using SyncPlugin::IFileLinkResolverFactory;
using SyncPlugin::ISyncPluginFactory;

CallResult CallPlugin(const std::function<CallResult()>& call)
{
    try {
        return call();
    } catch (const std::exception& exception) {
        return {Outcome::Threw, QString::fromUtf8(exception.what())};
    } catch (...) {
        return {Outcome::ThrewUnknown, {}};
    }
}

QString HostPlugin::Name() const
{
    return QFileInfo(m_library.fileName()).fileName();
}

CallResult HostPlugin::Load()
{
    return CallPlugin([&]() -> CallResult {
        if (!m_library.load())
            return {Outcome::Unusable, m_library.errorString()};
        return CheckContract();
    });
}

CallResult HostPlugin::CheckContract()
{
    using Function = std::uint64_t (*)();
    const auto stamp =
        reinterpret_cast<Function>(m_library.resolve("GetSyncPluginContractVersion"));
    const std::uint64_t own = m_stamp;
    if (stamp)
        m_stamp = stamp();
    if (m_stamp == own)
        return {};
    return {Outcome::Unusable, QStringLiteral("%1 was built for another contract").arg(Name())};
}

template <class Factory, class Service>
CallResult HostPlugin::Create(const char* exportName, Service* (Factory::*create)(),
                              std::unique_ptr<Service>& service)
{
    using Function = Factory* (*)();
    const auto function = reinterpret_cast<Function>(m_library.resolve(exportName));
    if (!function)
        return {Outcome::Unusable, QStringLiteral("Exported function %1 not found in plugin %2")
                                       .arg(QString::fromLatin1(exportName), Name())};
    return CallPlugin([&]() -> CallResult {
        const std::unique_ptr<Factory> factory(function());
        if (!factory)
            return {Outcome::NoFactory, {}};
        service.reset((factory.get()->*create)());
        return {service ? Outcome::Returned : Outcome::NoService, {}};
    });
}

CallResult HostPlugin::Create(std::unique_ptr<IFileLinkResolver>& resolver)
{
    return Create("CreateFileLinkResolverFactory",
                  &IFileLinkResolverFactory::CreateFileLinkResolver, resolver);
}

CallResult HostPlugin::Create(std::unique_ptr<IFileLayout>& layout)
{
    return Create("CreateSyncPluginFactory", &ISyncPluginFactory::CreateFileLayout, layout);
}

} // namespace Halvern::Isolation
