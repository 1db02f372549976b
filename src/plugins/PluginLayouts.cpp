// SPDX-License-Identifier: Apache-2.0

#include "fileset/FileMappingRef.h"
#include "plugins/PluginGuard.h"
#include "plugins/PluginManager.h"
#include "support/Logging.h"

#include <vector>

namespace Halvern::FileLink {

using SyncPlugin::IFileLayout;

namespace {

constexpr char LogSourceFile[] = "PluginManager.cpp";

// A file reached along many paths stands in the tree once for each: enough to read, not enough to
// fill a disk.
constexpr int MaxDumpLines = 100'000;

QString MappingLine(const FileMappingRef& mapping)
{
    return QStringLiteral("\"%1\" ==> \"%2\"").arg(mapping.SourceFile()).arg(mapping.TargetFile());
}

} // namespace

bool PluginManager::AssignTargetPaths(std::shared_ptr<FileMappingRef> mapping,
                                      FileLayoutContext* context)
{
    if (!mapping)
        return false;
    // A plug-in may change the source path on the way.
    const QString file = mapping->SourceFile();
    const QList<Plugin*> plugins = FindPluginForFile(file, PluginType::FileLayout);
    if (plugins.isEmpty())
        return true;

    CallProblems nowhere;
    CallProblems& problems = context ? context->Problems() : nowhere;
    bool assigned = false;
    for (Plugin* plugin : plugins) {
        problems.SetPlugin(plugin->GetModule());
        IFileLayout* layout = plugin->GetFileLayout();
        const QStringList faults = plugin->GetErrors();
        for (const QString& fault : faults)
            problems.Report(ProblemKind::PluginFault, fault);
        if (!layout)
            continue;
        QString error;
        const auto call = [&] { return layout->AssignTargetPaths(mapping.get(), context); };
        const bool answer =
            CallPlugin(plugin->GetModule(), "AssignTargetPaths", call, error).value_or(false);
        problems.ReportMessages();
        if (answer) {
            assigned = true;
            FILELINK_LOG(LogLevel::Debug,
                         QStringLiteral("Plugin %1 assigned target paths successfully for file %2")
                             .arg(plugin->GetModule())
                             .arg(file));
            continue;
        }
        if (!error.isEmpty())
            FILELINK_PROBLEM(problems.Sink(), FILELINK_FUNCTION, LogLevel::Error, error,
                             (problems.Make(ProblemKind::PluginFault, error)));
        FILELINK_LOG(LogLevel::Info,
                     QStringLiteral("Plugin %1 returned false in AssignTargetPaths for file %2")
                         .arg(plugin->GetModule())
                         .arg(file));
    }
    if (!assigned) {
        // The last one asked: files that several layouts know are rare.
        FILELINK_PROBLEM(problems.Sink(), FILELINK_FUNCTION, LogLevel::Error,
                         QStringLiteral("Failed to assign target paths for file %1").arg(file),
                         (problems.Make(ProblemKind::TargetsNotAssigned)));
        return false;
    }
    DumpFileMapping(mapping.get());
    return true;
}

void PluginManager::DumpFileMapping(FileMappingRef* mapping)
{
    // Walking the tree makes its nodes.
    if (!ModuleLogger().isEnabledFor(LogLevel::Trace))
        return;
    FILELINK_LOG(LogLevel::Trace, QStringLiteral("Source and target path mappings:"));
    FILELINK_LOG(LogLevel::Trace, MappingLine(*mapping));
    int lines = 1;
    std::vector<FileMappingRef*> pending{mapping};
    while (!pending.empty()) {
        const QList<std::shared_ptr<FileMappingRef>>& children = pending.back()->Children();
        pending.pop_back();
        for (const std::shared_ptr<FileMappingRef>& child : children) {
            if (lines++ == MaxDumpLines) {
                FILELINK_LOG(LogLevel::Trace,
                             QStringLiteral("Stopped after %1 lines: there are more mappings")
                                 .arg(MaxDumpLines));
                return;
            }
            FILELINK_LOG(LogLevel::Trace, MappingLine(*child));
        }
        for (auto child = children.crbegin(); child != children.crend(); ++child)
            pending.push_back(child->get());
    }
}

} // namespace Halvern::FileLink
