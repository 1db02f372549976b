// SPDX-License-Identifier: Apache-2.0

#include "fileset/LinkWalk.h"
#include "importer/FileLinkImporterImp.h"
#include "support/Logging.h"

namespace Halvern::FileLink {

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
bool LogNode(const FileMappingRef& node, bool source, int level, QSet<QString>& processed,
             const char* operation)
{
    const QString path = source ? node.SourceFile() : node.TargetFile();
    if (path.isEmpty())
        return false;
    const qsizetype before = processed.size();
    processed.insert(path.toCaseFolded());
    const bool alreadyWritten = processed.size() == before;
    // Joined, not filled in: deep in a chain of links the prefix is long, and each filling copies
    // it.
    FILELINK_LOG_FOR(operation, LogLevel::Debug,
                     Prefix(level) + path + Suffix(*node.Mapping(), alreadyWritten));
    return !alreadyWritten;
}

} // namespace

void FileLinkImporterImp::LogFileTree(bool source) const
{
    if (!ModuleLogger().isEnabledFor(LogLevel::Debug))
        return;
    const QList<NodePointer> roots = Hierarchy(source);
    FILELINK_LOG(LogLevel::Debug, source ? QStringLiteral("***Source file tree***")
                                         : QStringLiteral("***Target file tree***"));
    QSet<QString> processed;
    for (const NodePointer& root : roots)
        LogFileTree(root, source, 0, processed);
}

void FileLinkImporterImp::LogFileTree(const NodePointer& node, bool source, int level,
                                      QSet<QString>& processed) const
{
    LinkWalk walk;
    if (LogNode(*node, source, level, processed, FILELINK_FUNCTION))
        walk.Enter(node);
    while (walk.IsOpen()) {
        const NodePointer child = walk.NextChild();
        if (!child)
            walk.Leave();
        else if (LogNode(*child, source, level + walk.Depth(), processed, FILELINK_FUNCTION))
            walk.Enter(child);
    }
}

} // namespace Halvern::FileLink
