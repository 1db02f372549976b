// SPDX-License-Identifier: Apache-2.0

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
    const QString path = source ? node->SourceFile() : node->TargetFile();
    if (path.isEmpty())
        return;
    const qsizetype before = processed.size();
    processed.insert(path.toCaseFolded());
    const bool alreadyWritten = processed.size() == before;
    FILELINK_LOG(LogLevel::Debug, QStringLiteral("%1%2%3")
                                      .arg(Prefix(level))
                                      .arg(path)
                                      .arg(Suffix(*node->Mapping(), alreadyWritten)));
    if (alreadyWritten)
        return;
    for (const NodePointer& child : node->Children())
        LogFileTree(child, source, level + 1, processed);
}

} // namespace Halvern::FileLink
