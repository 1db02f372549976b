// SPDX-License-Identifier: Apache-2.0

#include "KnownFormats.h"

#include "filelink/FileLinkManager.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Jobs {

using FileLink::FileLinkManager;
using FileLink::PluginDescription;

bool IsKnownFormat(const QString& file)
{
    const QString extension = QFileInfo(file).suffix();
    const QList<PluginDescription> plugins = FileLinkManager::GetInstance()->GetPlugins();
    return std::any_of(plugins.begin(), plugins.end(), [&](const PluginDescription& plugin) {
        return plugin.service == QStringLiteral("File Link Resolver") &&
               (plugin.fileTypes.contains(QStringLiteral("*")) ||
                plugin.fileTypes.contains(extension, Qt::CaseInsensitive));
    });
}

} // namespace Halvern::Jobs
