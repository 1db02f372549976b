// SPDX-License-Identifier: Apache-2.0

#include "plugins/PluginManager.h"
#include "plugins/RegistrationCheck.h"
#include "plugins/XmlFiler.h"

#include <QtCore/QFileInfo>
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

/// Reads the current element as a declaration. Its service element is current afterwards, when it
/// has one. Nothing when it is incomplete.
std::optional<Plugin::Registration> ReadDeclaration(XmlFiler& filer)
{
    Plugin::Registration plugin;
    plugin.file = filer.FileName();
    plugin.module = filer.GetAttribute(QStringLiteral("Module"), {});
    plugin.name = filer.GetAttribute(QStringLiteral("Name"), {});
    plugin.contractVersion = filer.GetPlainAttribute(QStringLiteral("ContractVersion"), {});

    const std::optional<PluginType> type = MoveToService(filer);
    if (!type)
        return std::nullopt;
    plugin.type = *type;
    const QString fileTypes = filer.GetAttribute(QStringLiteral("FileTypes"), {});
    if (fileTypes.isEmpty())
        return std::nullopt;
    plugin.fileTypes = SplitFileTypes(fileTypes);
    plugin.priority = filer.GetPlainAttribute(QStringLiteral("Priority"), {}).toUInt(nullptr, 10);
    return plugin;
}

bool SayTheSame(const Plugin::Registration& one, const Plugin::Registration& other)
{
    return one.type == other.type && one.fileTypes == other.fileTypes &&
           one.priority == other.priority && one.name == other.name && one.module == other.module &&
           one.contractVersion == other.contractVersion;
}

} // namespace

bool PluginManager::LoadRegistrationFile(const QString& file)
{
    XmlFiler filer(XmlFiler::UnwrapTr);
    if (!filer.Open(file)) {
        m_registrationProblems.append(MakeRegistrationProblem(file, {}, filer.GetFailure()));
        return false;
    }
    const qsizetype before = m_plugins.size();
    const bool found = RegisterDeclarations(filer);
    m_registrationProblems.append(CheckRegistration(filer.Document(), file, found));
    for (const Plugin* plugin : m_plugins.mid(before))
        NoteSharedTypes(*plugin);
    return found;
}

// Every pass descends first and steps to a sibling last, so that only the first plug-in element of
// a file is read as a declaration: one plug-in per registration file is what is supported.
bool PluginManager::RegisterDeclarations(XmlFiler& filer)
{
    if (!filer.MoveTo(QStringLiteral("/SyncPlugins")))
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
    const QString module = filer.GetAttribute(QStringLiteral("Module"), {});
    if (module.isEmpty())
        return false;
    if (const Plugin* known = FindPluginByModule(module)) {
        NoteSecondRegistration(known->GetRegistration(), filer);
        return true;
    }
    std::optional<Plugin::Registration> plugin = ReadDeclaration(filer);
    if (!plugin)
        return false;
    m_completeFiles.append(plugin->file);
    m_plugins.append(new Plugin(std::move(*plugin), m_searchPaths));
    return true;
}

void PluginManager::NoteSecondRegistration(const Plugin::Registration& known, XmlFiler filer)
{
    const std::optional<Plugin::Registration> second = ReadDeclaration(filer);
    if (second)
        m_completeFiles.append(second->file);
    if (second && SayTheSame(known, *second))
        return;
    m_registrationProblems.append(MakeRegistrationProblem(
        filer.FileName(), known.module,
        QStringLiteral("The file is not used: %1 registers this library already, otherwise")
            .arg(known.file)));
}

void PluginManager::NoteSharedTypes(const Plugin& plugin)
{
    if (plugin.GetType() != PluginType::FileLinkResolver)
        return;
    const QString file = plugin.GetRegistration().file;
    for (const Plugin* other : std::as_const(m_plugins)) {
        if (other == &plugin)
            return;
        if (other->GetType() != PluginType::FileLinkResolver ||
            QFileInfo(other->GetRegistration().file).path() != QFileInfo(file).path())
            continue;
        QStringList shared;
        for (const QString& type : plugin.GetFileTypes())
            if (other->GetFileTypes().contains(type, Qt::CaseInsensitive))
                shared.append(type);
        if (!shared.isEmpty())
            m_registrationProblems.append(MakeRegistrationProblem(
                file, plugin.GetModule(),
                QStringLiteral("%1 of the same folder is registered for \"%2\", too: which of the "
                               "two resolvers is asked depends on the order of the folder")
                    .arg(other->GetModule(), shared.join(u','))));
    }
}

} // namespace Halvern::FileLink
