#include "GltfResolver.h"

#include "syncplugin/SyncPlugin.h"

#include <new>

namespace {

class Factory : public Halvern::SyncPlugin::IFileLinkResolverFactory
{
public:
    Halvern::SyncPlugin::IFileLinkResolver* CreateFileLinkResolver() override
    {
        return new (std::nothrow) Halvern::Formats::Gltf::GltfResolver;
    }
};

} // namespace

SYNCPLUGIN_EXPORT Halvern::SyncPlugin::IFileLinkResolverFactory* CreateFileLinkResolverFactory()
{
    return new (std::nothrow) Factory;
}
