// SPDX-License-Identifier: Apache-2.0

#include "FileStamps.h"

#include "base/ContentHash.h"
#include "base/FileHandle.h"
#include "base/NativePath.h"
#include "base/Units.h"

#include <chrono>
#include <filesystem>

namespace Halvern::Jobs {

namespace {

constexpr qint64 second = 1'000'000'000;

/// How long a file may keep its time though it is saved again. FAT counts in steps of two seconds;
/// a time with a fraction comes from a file system that counts finely, with a clock of the system
/// that goes on every 20 milliseconds at the latest.
constexpr qint64 RacyMoment(qint64 modified)
{
    return modified % second == 0 ? 2 * second + second / 10 : second / 10;
}

/// An empty hash when the file cannot be read or changes meanwhile.
FileStamp ReadStampWithHash(Base::Handle file)
{
    const Base::FileStatus before = Base::ReadFileStatus(file);
    Base::ContentHash hash;
    const bool isRead = static_cast<bool>(Base::HashContent(file, hash));
    const Base::FileStatus after = Base::ReadFileStatus(file);
    return StampOf(after, isRead && before == after ? &hash : nullptr);
}

Sameness CompareHashes(const FileStamp& recorded, const FileStamp& found)
{
    if (found.bytes != recorded.bytes)
        return Sameness::Changed;
    if (found.hash.isEmpty())
        return Sameness::Unknown;
    return found.hash == recorded.hash ? Sameness::Same : Sameness::Changed;
}

} // namespace

qint64 ClockNow()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
}

FileStamp StampOf(const QString& path, bool withHash)
{
    const std::filesystem::path file = Base::NativePath(Base::Units(path));
    Base::Handle handle = Base::NoHandle;
    if (!withHash || !Base::OpenForReading(file, handle))
        return StampOf(Base::ReadFileStatus(file));
    const FileStamp stamp = ReadStampWithHash(handle);
    Base::Close(handle);
    return stamp;
}

FileStamp StampOf(const Base::FileStatus& status, const Base::ContentHash* hash)
{
    FileStamp stamp;
    if (status.kind != Base::FileKind::File)
        return stamp;
    stamp.bytes = static_cast<qint64>(status.size);
    stamp.modified = status.modified;
    if (hash)
        stamp.hash = QByteArray(reinterpret_cast<const char*>(hash->bytes.data()),
                                static_cast<qsizetype>(hash->bytes.size()));
    return stamp;
}

bool IsRacy(const FileStamp& stamp, qint64 recordedAt)
{
    return stamp.modified > recordedAt - RacyMoment(stamp.modified);
}

Sameness CompareWithRecord(const FileStamp& recorded, qint64 recordedAt, const QString& path,
                           bool checksum, FileStamp* now)
{
    FileStamp ignored;
    FileStamp& found = now ? *now : ignored;
    found = StampOf(path, false);
    if (found.bytes < 0 || found.bytes != recorded.bytes)
        return Sameness::Changed;
    if (found.bytes == 0)
        return Sameness::Same;
    const bool timeTells = found.modified == recorded.modified && !IsRacy(recorded, recordedAt);
    if (timeTells && !checksum)
        return Sameness::Same;
    if (recorded.hash.isEmpty())
        return timeTells ? Sameness::Unknown : Sameness::Changed;
    found = StampOf(path, true);
    return CompareHashes(recorded, found);
}

bool IsSameAsRecorded(const FileStamp& recorded, qint64 recordedAt, const QString& path,
                      bool checksum, FileStamp* now)
{
    return CompareWithRecord(recorded, recordedAt, path, checksum, now) == Sameness::Same;
}

} // namespace Halvern::Jobs
