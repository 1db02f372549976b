// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/SyncPlugin.h"

#include <new>

/// What a plug-in library has to export, made of the class that serves. In one source, outside of
/// namespaces:
///
///     #include "pluginkit/Exports.h"
///
///     PLUGINKIT_EXPORT_RESOLVER(MyFormat::Resolver);
///
/// A library with both services uses PLUGINKIT_EXPORT_RESOLVER_FACTORY,
/// PLUGINKIT_EXPORT_LAYOUT_FACTORY and, once, SYNCPLUGIN_EXPORT_CONTRACT_VERSION.

namespace Halvern::PluginKit {

/// Makes resolvers of one class, without arguments; null when one cannot be made. The host owns
/// both the factory and what it makes. Never throws.
template <typename Resolver>
class ResolverFactory : public SyncPlugin::IFileLinkResolverFactory
{
public:
    SyncPlugin::IFileLinkResolver* CreateFileLinkResolver() noexcept override
    {
        try {
            return new Resolver;
        } catch (...) {
            return nullptr;
        }
    }
};

/// The same for layouts.
template <typename Layout>
class LayoutFactory : public SyncPlugin::ISyncPluginFactory
{
public:
    SyncPlugin::IFileLayout* CreateFileLayout() noexcept override
    {
        try {
            return new Layout;
        } catch (...) {
            return nullptr;
        }
    }
};

} // namespace Halvern::PluginKit

/// Exports the factory that makes resolvers of this class.
#define PLUGINKIT_EXPORT_RESOLVER_FACTORY(...)                                                     \
    SYNCPLUGIN_EXPORT ::Halvern::SyncPlugin::IFileLinkResolverFactory*                             \
    CreateFileLinkResolverFactory()                                                                \
    {                                                                                              \
        return new (std::nothrow)::Halvern::PluginKit::ResolverFactory<__VA_ARGS__>;               \
    }                                                                                              \
    static_assert(true, "a semicolon ends it")

/// Exports the factory that makes layouts of this class.
#define PLUGINKIT_EXPORT_LAYOUT_FACTORY(...)                                                       \
    SYNCPLUGIN_EXPORT ::Halvern::SyncPlugin::ISyncPluginFactory* CreateSyncPluginFactory()         \
    {                                                                                              \
        return new (std::nothrow)::Halvern::PluginKit::LayoutFactory<__VA_ARGS__>;                 \
    }                                                                                              \
    static_assert(true, "a semicolon ends it")

/// All that a library with one resolver exports.
#define PLUGINKIT_EXPORT_RESOLVER(...)                                                             \
    PLUGINKIT_EXPORT_RESOLVER_FACTORY(__VA_ARGS__);                                                \
    SYNCPLUGIN_EXPORT_CONTRACT_VERSION()

/// All that a library with one layout exports.
#define PLUGINKIT_EXPORT_LAYOUT(...)                                                               \
    PLUGINKIT_EXPORT_LAYOUT_FACTORY(__VA_ARGS__);                                                  \
    SYNCPLUGIN_EXPORT_CONTRACT_VERSION()
