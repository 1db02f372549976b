// SPDX-License-Identifier: Apache-2.0

#include "SourceTreeLayout.h"

#include "syncplugin/SyncPlugin.h"

#include <new>

namespace {

class Factory : public Halvern::SyncPlugin::ISyncPluginFactory
{
public:
    Halvern::SyncPlugin::IFileLayout* CreateFileLayout() override
    {
        return new (std::nothrow) Halvern::Formats::Layout::SourceTreeLayout;
    }
};

} // namespace

SYNCPLUGIN_EXPORT Halvern::SyncPlugin::ISyncPluginFactory* CreateSyncPluginFactory()
{
    return new (std::nothrow) Factory;
}
