// SPDX-License-Identifier: Apache-2.0

#include "plugins/LinkRecords.h"
#include "plugins/PluginGuard.h"
#include "plugins/PluginManager.h"
#include "support/FileOperations.h"
#include "support/Logging.h"

#include <vector>

namespace Halvern::FileLink {

using SyncPlugin::FileLinkInfo;
using SyncPlugin::IFileLinkResolver;
using SyncPlugin::IFileLinkResolverContext;

namespace {

constexpr char LogSourceFile[] = "PluginManager.cpp";

/// Appends the array that a plug-in returned and frees it. False, with nothing appended, when there
/// cannot be such an array.
bool TakeLinks(FileLinkInfo* array, int count, QList<FileLinkInfo>& links)
{
    const std::unique_ptr<FileLinkInfo[]> owner(array);
    if (count < 0 || (count > 0 && !array))
        return false;
    links.reserve(links.size() + count);
    for (int i = 0; i < count; ++i) {
        links.append(array[i]);
        TerminateTexts(links.last());
    }
    return true;
}

/// Calls the resolver and appends what it returned. On failure `error` tells what the plug-in did
/// wrong; it stays empty when the plug-in only reported failure.
bool ReadLinks(const QString& module, IFileLinkResolver& resolver, const QString& file,
               IFileLinkResolverContext* context, QList<FileLinkInfo>& links, QString& error)
{
    const WideString path = ToWideString(file);
    const auto call = [&] {
        FileLinkInfo* array = nullptr;
        int count = 0;
        if (!resolver.GetFileLinks(path.c_str(), &array, &count, context))
            return false;
        const QString form = array ? QStringLiteral("an array") : QStringLiteral("no array");
        if (TakeLinks(array, count, links))
            return true;
        error = QStringLiteral("Plugin %1 returned a count of %2 with %3 in GetFileLinks")
                    .arg(module, QString::number(count), form);
        return false;
    };
    return CallPlugin(module, "GetFileLinks", call, error).value_or(false);
}

} // namespace

bool PluginManager::GetFileLinks(const QString& file, QList<FileLinkInfo>& links,
                                 IFileLinkResolverContext* context)
{
    if (!PathExists(file)) {
        FILELINK_LOG(
            LogLevel::Error,
            QStringLiteral("Failed to get file links from file %1. File not found.").arg(file));
        return false;
    }
    const QList<Plugin*> plugins = FindPluginForFile(file, PluginType::FileLinkResolver);
    if (plugins.isEmpty())
        return true;
    Plugin& plugin = *plugins.first();
    IFileLinkResolver* resolver = plugin.GetFileLinkResolver();
    if (!resolver)
        return false;

    QString error;
    if (ReadLinks(plugin.GetModule(), *resolver, file, context, links, error))
        return true;
    if (!error.isEmpty())
        FILELINK_LOG(LogLevel::Error, error);
    FILELINK_LOG(LogLevel::Error,
                 QStringLiteral("Failed to get file links from file %1").arg(file));
    return false;
}

bool PluginManager::RepathFileLinks(const QString& file, const QList<FileLinkInfo>& links,
                                    IFileLinkResolverContext* context)
{
    if (links.isEmpty())
        return true;
    if (!PathExists(file)) {
        FILELINK_LOG(
            LogLevel::Error,
            QStringLiteral("Failed to repath file links in file %1. File not found.").arg(file));
        return false;
    }
    const QList<Plugin*> plugins = FindPluginForFile(file, PluginType::FileLinkResolver);
    if (plugins.isEmpty())
        return true;
    Plugin& plugin = *plugins.first();
    IFileLinkResolver* resolver = plugin.GetFileLinkResolver();
    if (!resolver)
        return false;

    // Copies: whatever the plug-in does with them, the caller's stay.
    const std::vector<FileLinkInfo> records(links.cbegin(), links.cend());
    const WideString path = ToWideString(file);
    const auto call = [&] {
        return resolver->RepathFileLinks(path.c_str(), records.data(), int(records.size()),
                                         context);
    };
    QString error;
    if (CallPlugin(plugin.GetModule(), "RepathFileLinks", call, error).value_or(false))
        return true;
    if (!error.isEmpty())
        FILELINK_LOG(LogLevel::Error, error);
    FILELINK_LOG(
        LogLevel::Error,
        QStringLiteral("Failed to repath file links in file %1. Plugin returned false.").arg(file));
    return false;
}

} // namespace Halvern::FileLink
