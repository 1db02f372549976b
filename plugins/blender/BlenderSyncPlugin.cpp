// SPDX-License-Identifier: Apache-2.0

#include "BlendResolver.h"

#include "syncplugin/SyncPlugin.h"

SYNCPLUGIN_EXPORT Halvern::SyncPlugin::IFileLinkResolverFactory* CreateFileLinkResolverFactory()
{
    return new (std::nothrow)
        Halvern::PluginKit::ResolverFactory<Halvern::Formats::Blender::BlendResolver>;
}
