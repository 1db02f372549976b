// SPDX-License-Identifier: Apache-2.0

#include "stages/FileTreeLog.h"
#include "fileset/LinkWalk.h"

namespace Halvern::FileLink::Stages {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

QString Prefix(int level)
{
    return level == 0 ? QString() : QString(4 * (level - 1), u'-') + QStringLiteral("--->");
}

QString Suffix(const FileMapping& mapping, bool alreadyWritten)
{
    if (alreadyWritten)
        return QStringLiteral(" (processed already)");
    const QString flags = mapping.GetFlagName();
    return flags.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(flags);
}

/// Writes a node's line. False when nothing is written below it: it has no path, or stood in the
/// tree before.
bool LogNode(const FileMappingRef& node, bool source, int level, QSet<QString>& processed)
{
    const QString path = source ? node.SourceFile() : node.TargetFile();
    if (path.isEmpty())
        return false;
    const qsizetype before = processed.size();
    processed.insert(path.toCaseFolded());
    const bool alreadyWritten = processed.size() == before;
    // The prefix is put before, not filled in: deep in a chain of links it is long, and each
    // filling copies it.
    FILELINK_LOG_FOR(Operation::LogFileTreeNode, LogLevel::Debug,
                     Prefix(level) + QStringLiteral("%2%3").arg(path).arg(
                                         Suffix(*node.Mapping(), alreadyWritten)));
    return !alreadyWritten;
}

void LogTreeOf(const StageContext::NodePointer& node, bool source, QSet<QString>& processed)
{
    LinkWalk walk;
    if (LogNode(*node, source, 0, processed))
        walk.Enter(node);
    while (walk.IsOpen()) {
        const StageContext::NodePointer child = walk.NextChild();
        if (!child)
            walk.Leave();
        else if (LogNode(*child, source, walk.Depth(), processed))
            walk.Enter(child);
    }
}

} // namespace

void LogFileTree(const StageContext& context, bool source)
{
    if (!ModuleLogger().isEnabledFor(LogLevel::Debug))
        return;
    const QList<StageContext::NodePointer> roots = context.Hierarchy(source);
    FILELINK_LOG_FOR(Operation::LogFileTree, LogLevel::Debug,
                     source ? QStringLiteral("***Source file tree***")
                            : QStringLiteral("***Target file tree***"));
    QSet<QString> processed;
    for (const StageContext::NodePointer& root : roots)
        LogTreeOf(root, source, processed);
}

} // namespace Halvern::FileLink::Stages
