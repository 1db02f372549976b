// SPDX-License-Identifier: Apache-2.0

#include "LinkReader.h"

#include "Paths.h"

#include "base/FileStatus.h"
#include "base/KnownFolders.h"
#include "base/NativePath.h"
#include "syncplugin/ReferenceIds.h"
#include "syncservices/SyncLibUtil.h"

#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

#include <string_view>
#include <utility>

namespace Halvern::Jobs {

using FileLink::FileLinkManager;
using FileLink::PluginDescription;
using SyncServices::SyncLibUtil;

namespace {

/// The library of a plug-in: beside its registration file, or where the program looks.
Base::FileStatus LibraryStatus(const PluginDescription& plugin)
{
    const std::filesystem::path program = Base::ProgramFile().parent_path();
    const std::filesystem::path module = Native(plugin.module);
    for (const std::filesystem::path& folder :
         {Native(plugin.registrationFile).parent_path(), program, program / "SyncPlugins"}) {
        const Base::FileStatus status = Base::ReadFileStatus(folder / module);
        if (status.Exists())
            return status;
    }
    return {};
}

QString Describe(const PluginDescription& plugin)
{
    const Base::FileStatus library = LibraryStatus(plugin);
    return QStringLiteral("%1 %2 %3").arg(plugin.module).arg(library.size).arg(library.modified);
}

bool IsFoundByName(const SyncServices::FileLink& link)
{
    const auto begins = [&](std::string_view mark) {
        return link.RefId.startsWith(QString::fromUtf8(mark.data(), qsizetype(mark.size())));
    };
    return begins(SyncPlugin::CompanionMark) || begins(SyncPlugin::SetMark);
}

} // namespace

LinkReader::LinkReader(FileLink::FileLinkImporter& importer) : m_importer(importer)
{
    const QList<PluginDescription> plugins = FileLinkManager::GetInstance()->GetPlugins();
    for (const PluginDescription& plugin : plugins)
        if (plugin.service == QStringLiteral("File Link Resolver"))
            m_resolvers.append(plugin);
}

QString LinkReader::ReadersOf(const QString& file)
{
    const QString extension = QFileInfo(file).suffix().toLower();
    const auto known = m_byExtension.constFind(extension);
    if (known != m_byExtension.constEnd())
        return *known;
    QString readers;
    for (const PluginDescription& plugin : std::as_const(m_resolvers))
        if (readers.isEmpty() && SyncLibUtil::IsInFileTypeList(file, plugin.fileTypes))
            readers = Describe(plugin);
    m_byExtension.insert(extension, readers);
    return readers;
}

QString LinkReader::ReadersOf(const QString& file, const Links& links)
{
    QString readers = ReadersOf(file);
    if (readers.isEmpty())
        return readers;
    QStringList folders{QFileInfo(file).path()};
    for (const SyncServices::FileLink& link : links)
        if (IsFoundByName(link))
            folders.append(QFileInfo(ResolveLink(link.Path, file)).path());
    folders.removeDuplicates();
    for (const QString& folder : std::as_const(folders))
        readers += u' ' + QString::number(TimeOfFolder(folder));
    return readers;
}

/// When something was last added to it or taken away.
qint64 LinkReader::TimeOfFolder(const QString& folder)
{
    const auto known = m_folderTimes.constFind(folder);
    if (known != m_folderTimes.constEnd())
        return *known;
    return *m_folderTimes.insert(folder, Base::ReadFileStatus(Native(folder)).modified);
}

} // namespace Halvern::Jobs
