// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTimes.h"

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>

#include <ostream>

namespace Halvern::Test {

/// What must stay the same of something that nobody touched: which file it is, its bytes, and its
/// time to the nanosecond. A symbolic link is what it says, not where it leads.
struct FileStamp
{
    /// "file", "folder", "link" or "none".
    QByteArray kind = "none";
    /// Of a link the path that it holds; of a folder nothing.
    QByteArray content;
    /// The last-modified time.
    qint64 nanoseconds = 0;
    quint64 index = 0;
    quint32 mode = 0;

    bool operator==(const FileStamp&) const = default;
};

FileStamp StampOf(const QString& path);
/// Everything below a folder, by relative path, folders included.
QMap<QString, FileStamp> StampsBelow(const QString& folder);

void PrintTo(const FileStamp& stamp, std::ostream* out);

} // namespace Halvern::Test
