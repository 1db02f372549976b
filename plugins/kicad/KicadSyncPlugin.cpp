// SPDX-License-Identifier: Apache-2.0

#include "KicadResolver.h"

#include "syncplugin/SyncPlugin.h"

SYNCPLUGIN_EXPORT Halvern::SyncPlugin::IFileLinkResolverFactory* CreateFileLinkResolverFactory()
{
    return new (std::nothrow)
        Halvern::PluginKit::ResolverFactory<Halvern::Formats::Kicad::KicadResolver>;
}
