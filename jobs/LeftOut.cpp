// SPDX-License-Identifier: Apache-2.0

#include "Paths.h"
#include "Selection.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

namespace {

/// `nameInSelection` is the path below the folder that holds the source.
Remark WhyLeftOut(const QString& nameInSelection, const QFileInfo& info)
{
    if (info.isShortcut())
        return Remark::None;
    if (info.isDir() && info.isSymLink())
        return Remark::LinkToFolder;
    if (!info.exists())
        return Remark::LinkToNothing;
    if (!info.isDir() && !info.isFile())
        return Remark::NoFile;
    return nameInSelection.contains(u':') ? Remark::ColonInName : Remark::None;
}

void AppendLeftOut(const QString& parent, const QFileInfo& info, QList<LeftOutItem>& items)
{
    const QString path = info.filePath();
    const Remark remark = WhyLeftOut(path.mid(parent.size()), info);
    if (remark != Remark::None)
        items.append({path, remark, {}});
}

} // namespace

QList<LeftOutItem> LeftOut(const QStringList& sources)
{
    QList<LeftOutItem> items;
    for (const QString& source : sources) {
        const QFileInfo info(source);
        const QString parent = info.path();
        AppendLeftOut(parent, info, items);
        if (!IsFolder(source))
            continue;
        QDirIterator entries(source,
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            entries.next();
            AppendLeftOut(parent, entries.fileInfo(), items);
        }
    }
    return items;
}

} // namespace Halvern::Jobs
