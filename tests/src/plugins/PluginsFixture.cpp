// SPDX-License-Identifier: Apache-2.0

#include "PluginsFixture.h"

#include <stdexcept>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

using FileLink::Plugin;

QString ZooFolder()
{
    return QStringLiteral(ZOO_FOLDER);
}

QString ZooModule(const QString& fault)
{
    return QStringLiteral(ZOO_PREFIX) + fault + QStringLiteral(ZOO_SUFFIX);
}

PluginsFixture::PluginsFixture()
{
    manager.AddPluginSearchPaths({TestPluginFolder(), ZooFolder()});
    manager.AddRegistrationFolders({tree.Path(u"reg"_s)});
}

void PluginsFixture::WriteRegistration(const QString& name, const QByteArray& text)
{
    tree.File(u"reg/%1.syncplugin"_s.arg(name), text);
}

void PluginsFixture::AddRegistration(const QByteArray& text)
{
    const QString folder = u"reg%1"_s.arg(++m_registrations);
    tree.File(folder + u"/plugin.syncplugin"_s, text);
    manager.AddRegistrationFolders({tree.Path(folder)});
}

void PluginsFixture::RegisterResolver(const QString& module, const QString& fileTypes)
{
    AddRegistration(Registration(module, u"FileLinkResolver"_s, fileTypes));
}

void PluginsFixture::RegisterLayout(const QString& module, const QString& fileTypes)
{
    AddRegistration(Registration(module, u"FileLayout"_s, fileTypes));
}

Plugin& PluginsFixture::Find(const QString& module)
{
    manager.EnsureRegistered();
    Plugin* plugin = manager.FindPluginByModule(module);
    if (!plugin)
        throw std::runtime_error("no plug-in " + module.toStdString());
    return *plugin;
}

QStringList PluginsFixture::Modules(const QList<Plugin*>& plugins)
{
    QStringList modules;
    for (const Plugin* plugin : plugins)
        modules.append(plugin->GetModule());
    return modules;
}

} // namespace Halvern::Test
