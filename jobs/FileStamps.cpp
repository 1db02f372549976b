// SPDX-License-Identifier: Apache-2.0

#include "FileStamps.h"

#include "Paths.h"

#include "base/ContentHash.h"
#include "base/FileStatus.h"

#include <chrono>

namespace Halvern::Jobs {

FileStamp StampOf(const QString& path, bool withHash)
{
    const Base::FileStatus status = Base::ReadFileStatus(Native(path));
    FileStamp stamp;
    if (status.kind != Base::FileKind::File)
        return stamp;
    stamp.bytes = qint64(status.size);
    stamp.modified = status.modified;
    Base::ContentHash hash;
    if (withHash && Base::HashContent(Native(path), hash))
        stamp.hash = QByteArray(reinterpret_cast<const char*>(hash.bytes.data()),
                                qsizetype(hash.bytes.size()));
    return stamp;
}

bool IsRacyAt(qint64 modified, qint64 recordedAt)
{
    return recordedAt - modified < 2'100'000'000;
}

bool IsRacy(qint64 modified)
{
    using namespace std::chrono;
    return IsRacyAt(modified,
                    duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count());
}

bool IsSameAsRecorded(const FileStamp& recorded, qint64 recordedAt, const QString& path,
                      bool checksum, FileStamp* now)
{
    FileStamp current = StampOf(path, false);
    const bool isSameTime = current.modified == recorded.modified;
    const bool asksContent =
        current.bytes == recorded.bytes && current.bytes >= 0 &&
        (checksum || !isSameTime || IsRacyAt(recorded.modified, recordedAt)) &&
        !recorded.hash.isEmpty();
    if (asksContent)
        current = StampOf(path, true);
    if (now)
        *now = current;
    if (current.bytes < 0 || current.bytes != recorded.bytes)
        return false;
    return asksContent ? current.hash == recorded.hash : isSameTime && recorded.hash.isEmpty();
}

} // namespace Halvern::Jobs
