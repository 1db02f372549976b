// SPDX-License-Identifier: Apache-2.0

#include "plugins/PluginManager.h"
#include "plugins/XmlFiler.h"

#include <QtCore/QRegularExpression>

#include <optional>

namespace Halvern::FileLink {

namespace {

/// Makes the element of the service that a plug-in offers current.
std::optional<PluginType> MoveToService(XmlFiler& filer)
{
    if (filer.MoveTo(QStringLiteral("FileLayout")))
        return PluginType::FileLayout;
    if (filer.MoveTo(QStringLiteral("FileLinkResolver")))
        return PluginType::FileLinkResolver;
    return std::nullopt;
}

QStringList SplitFileTypes(const QString& text)
{
    static const QRegularExpression separator(QStringLiteral(",\\.?"));
    QStringList types = text.split(separator, Qt::SkipEmptyParts);
    // The separator takes the dot of every later item that follows its comma directly.
    if (!types.isEmpty())
        types.first().remove(u'.');
    return types;
}

} // namespace

// Every pass descends first and steps to a sibling last, so that only the first plug-in element of
// a file is read as a declaration: one plug-in per registration file is what is supported.
bool PluginManager::LoadRegistrationFile(const QString& file)
{
    XmlFiler filer(XmlFiler::UnwrapTr);
    if (!filer.Open(file) || !filer.MoveTo(QStringLiteral("/SyncPlugins")))
        return false;
    bool found = false;
    while (filer.MoveToFirstChild()) {
        if (RegisterDeclaration(filer))
            found = true;
        if (!filer.MoveToNextSibling())
            break;
    }
    return found;
}

bool PluginManager::RegisterDeclaration(XmlFiler& filer)
{
    Plugin::Registration plugin;
    plugin.module = filer.GetAttribute(QStringLiteral("Module"), {});
    if (plugin.module.isEmpty())
        return false;
    if (FindPluginByModule(plugin.module))
        return true;
    plugin.name = filer.GetAttribute(QStringLiteral("Name"), {});

    const std::optional<PluginType> type = MoveToService(filer);
    if (!type)
        return false;
    plugin.type = *type;
    const QString fileTypes = filer.GetAttribute(QStringLiteral("FileTypes"), {});
    if (fileTypes.isEmpty())
        return false;
    plugin.fileTypes = SplitFileTypes(fileTypes);
    plugin.priority = filer.GetPlainAttribute(QStringLiteral("Priority"), {}).toUInt(nullptr, 10);
    m_plugins.append(new Plugin(std::move(plugin), m_searchPaths));
    return true;
}

} // namespace Halvern::FileLink
