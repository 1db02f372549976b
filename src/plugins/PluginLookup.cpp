// SPDX-License-Identifier: Apache-2.0

#include "plugins/PluginManager.h"
#include "support/Logging.h"

#include <QtCore/QFileInfo>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "PluginManager.cpp";

QString JoinModules(const QList<Plugin*>& plugins)
{
    QStringList modules;
    for (const Plugin* plugin : plugins)
        modules.append(plugin->GetModule());
    return modules.join(u',');
}

} // namespace

QList<Plugin*> PluginManager::FindPluginForFile(const QString& file, PluginType type)
{
    EnsureRegistered();
    const QString extension = QFileInfo(file).suffix().toUpper();
    const QString typeName = GetPluginTypeName(type);
    const QString key = QStringLiteral("%1.%2").arg(extension, typeName);
    if (const auto known = m_lookupCache.constFind(key); known != m_lookupCache.constEnd())
        return *known;

    FILELINK_LOG(
        LogLevel::Debug,
        QStringLiteral("Searching for %1 plugin for file type %2").arg(typeName).arg(extension));
    const QList<Plugin*> found = SearchPlugins(extension, type);
    m_lookupCache.insert(key, found);
    if (found.isEmpty())
        FILELINK_LOG(
            LogLevel::Info,
            QStringLiteral("No %1 plugin found for file type %2").arg(typeName).arg(extension));
    else
        FILELINK_LOG(LogLevel::Debug, QStringLiteral("Found %1 %2 plugin(s) for file type %3: %4")
                                          .arg(found.size())
                                          .arg(typeName)
                                          .arg(extension)
                                          .arg(JoinModules(found)));
    return found;
}

QList<Plugin*> PluginManager::SearchPlugins(const QString& extension, PluginType type) const
{
    QList<Plugin*> found;
    Plugin* fallback = nullptr;
    for (Plugin* plugin : m_plugins) {
        if (plugin->GetType() != type)
            continue;
        const QStringList fileTypes = plugin->GetFileTypes();
        if (type == PluginType::FileLinkResolver && fileTypes.contains(QStringLiteral("*")))
            fallback = plugin;
        else if (fileTypes.contains(extension, Qt::CaseInsensitive))
            found.append(plugin);
    }
    if (fallback)
        found.append(fallback);
    return found;
}

Plugin* PluginManager::FindPluginByModule(const QString& module) const
{
    const QString name = QFileInfo(module).fileName();
    for (Plugin* plugin : m_plugins)
        if (QFileInfo(plugin->GetModule()).fileName().compare(name, Qt::CaseInsensitive) == 0)
            return plugin;
    return nullptr;
}

} // namespace Halvern::FileLink
