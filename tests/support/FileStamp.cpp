// SPDX-License-Identifier: Apache-2.0

#include "FileStamp.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>

namespace Halvern::Test {

QMap<QString, FileStamp> StampsBelow(const QString& folder)
{
    QMap<QString, FileStamp> stamps;
    const QDir root(folder);
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        stamps.insert(root.relativeFilePath(path), StampOf(path));
    }
    return stamps;
}

void PrintTo(const FileStamp& stamp, std::ostream* out)
{
    *out << stamp.kind.toStdString() << " of " << stamp.content.size() << " bytes, time "
         << stamp.nanoseconds << ", index " << stamp.index << ", mode " << std::oct << stamp.mode
         << std::dec << ": " << stamp.content.left(200).toStdString();
}

} // namespace Halvern::Test
