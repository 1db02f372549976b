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

/// Contexts that are not the module's own hand nothing out.
CallProblems& ProblemsOf(IFileLinkResolverContext* context, CallProblems& nowhere)
{
    auto* const known = dynamic_cast<FileLinkResolverContext*>(context);
    return known ? known->Problems() : nowhere;
}

/// A resolver that could be made only earlier is used; what went wrong now is told even then.
IFileLinkResolver* TakeResolver(Plugin& plugin, CallProblems& problems, ProblemKind without)
{
    problems.SetPlugin(plugin.GetModule());
    IFileLinkResolver* const resolver = plugin.GetFileLinkResolver();
    const QStringList errors = plugin.GetErrors();
    for (const QString& error : errors)
        problems.Report(ProblemKind::PluginFault, error);
    if (!resolver)
        problems.Report(without);
    return resolver;
}

} // namespace

bool PluginManager::GetFileLinks(const QString& file, QList<FileLinkInfo>& links,
                                 IFileLinkResolverContext* context)
{
    CallProblems nowhere;
    CallProblems& problems = ProblemsOf(context, nowhere);
    if (!PathExists(file)) {
        FILELINK_PROBLEM(
            problems.Sink(), FILELINK_FUNCTION, LogLevel::Error,
            QStringLiteral("Failed to get file links from file %1. File not found.").arg(file),
            (problems.Make(ProblemKind::FileMissing)));
        return false;
    }
    const QList<Plugin*> plugins = FindPluginForFile(file, PluginType::FileLinkResolver);
    if (plugins.isEmpty())
        return true;
    Plugin& plugin = *plugins.first();
    IFileLinkResolver* resolver = TakeResolver(plugin, problems, ProblemKind::LinksNotRead);
    if (!resolver)
        return false;

    QString error;
    const bool read = ReadLinks(plugin.GetModule(), *resolver, file, context, links, error);
    problems.ReportMessages();
    if (read)
        return true;
    if (!error.isEmpty())
        FILELINK_PROBLEM(problems.Sink(), FILELINK_FUNCTION, LogLevel::Error, error,
                         (problems.Make(ProblemKind::PluginFault, error)));
    FILELINK_PROBLEM(problems.Sink(), FILELINK_FUNCTION, LogLevel::Error,
                     QStringLiteral("Failed to get file links from file %1").arg(file),
                     (problems.Make(ProblemKind::LinksNotRead)));
    return false;
}

bool PluginManager::RepathFileLinks(const QString& file, const QList<FileLinkInfo>& links,
                                    IFileLinkResolverContext* context)
{
    if (links.isEmpty())
        return true;
    CallProblems nowhere;
    CallProblems& problems = ProblemsOf(context, nowhere);
    if (!PathExists(file)) {
        FILELINK_PROBLEM(
            problems.Sink(), FILELINK_FUNCTION, LogLevel::Error,
            QStringLiteral("Failed to repath file links in file %1. File not found.").arg(file),
            (problems.Make(ProblemKind::FileMissing)));
        return false;
    }
    const QList<Plugin*> plugins = FindPluginForFile(file, PluginType::FileLinkResolver);
    if (plugins.isEmpty())
        return true;
    Plugin& plugin = *plugins.first();
    IFileLinkResolver* resolver = TakeResolver(plugin, problems, ProblemKind::LinksNotRewritten);
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
    const bool rewritten =
        CallPlugin(plugin.GetModule(), "RepathFileLinks", call, error).value_or(false);
    problems.ReportMessages();
    if (rewritten)
        return true;
    if (!error.isEmpty())
        FILELINK_PROBLEM(problems.Sink(), FILELINK_FUNCTION, LogLevel::Error, error,
                         (problems.Make(ProblemKind::PluginFault, error)));
    FILELINK_PROBLEM(
        problems.Sink(), FILELINK_FUNCTION, LogLevel::Error,
        QStringLiteral("Failed to repath file links in file %1. Plugin returned false.").arg(file),
        (problems.Make(ProblemKind::LinksNotRewritten)));
    return false;
}

} // namespace Halvern::FileLink
