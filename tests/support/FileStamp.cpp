// SPDX-License-Identifier: Apache-2.0

#include "FileStamp.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>

#include <chrono>
#include <filesystem>

namespace Halvern::Test {

namespace {

std::filesystem::path Native(const QString& path)
{
    return std::filesystem::path(path.toStdU16String());
}

using FileClock = std::chrono::file_clock;

} // namespace

qint64 ModifiedNanoseconds(const QString& path)
{
    const auto time = FileClock::to_sys(std::filesystem::last_write_time(Native(path)));
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
}

void SetModifiedNanoseconds(const QString& path, qint64 nanoseconds)
{
    const std::chrono::sys_time<std::chrono::nanoseconds> time{
        std::chrono::nanoseconds(nanoseconds)};
    std::filesystem::last_write_time(
        Native(path), std::chrono::time_point_cast<FileClock::duration>(FileClock::from_sys(time)));
}

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
