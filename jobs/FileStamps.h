// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"

#include "base/FileStatus.h"

namespace Halvern::Base {
struct ContentHash;
}

namespace Halvern::Jobs {

// Whether a file is still what a record says. Symbolic links are followed. Only a lack of memory
// throws.
//
// Size and time tell, but for a file that was saved in the moment in which it was recorded: its
// next save may leave both as they are. That moment is as long as the steps of the file system's
// clock, and only content tells then. So whoever records a stamp does it in this order:
//
//     recorded.recordedAt = ClockNow();             before the file is looked at
//     recorded.stamp = StampOf(path, false);
//     if (IsRacy(recorded.stamp, recorded.recordedAt))
//         recorded.stamp = StampOf(path, true);     or with a hash that is known from copying
//
// A clock of a file server that runs behind this machine's by more than that moment is not noticed.

enum class Sameness
{
    Same,
    Changed,
    /// The content would have to tell, and cannot be read or has nothing to be compared with.
    Unknown
};

/// This machine's clock, in nanoseconds since 1970.
qint64 ClockNow();

/// What stands at the path; without a regular file a stamp of which nothing is known. The hash
/// stays empty when it is not asked for, the file cannot be read, or it changes meanwhile.
FileStamp StampOf(const QString& path, bool withHash);
FileStamp StampOf(const Base::FileStatus& status, const Base::ContentHash* hash = nullptr);

/// Whether a file could have been saved again after its stamp was taken without another time. That
/// is so for all times after recordedAt, too: clocks go wrong, and a job may take long.
bool IsRacy(const FileStamp& stamp, qint64 recordedAt);

/// Another size is a change, and what is empty is the same. With any other size
///
/// - another time is one unless a recorded hash says that the content is the same,
/// - the same time is none, but when it is racy or `checksum` is true the hash decides. A racy
/// record
///   without one counts as changed. With `checksum` alone, size and time being the same and no hash
///   recorded, the answer is Unknown.
///
/// What cannot be looked at, or is no regular file, is changed; a file that cannot be read when its
/// hash is needed is Unknown. `now` becomes the stamp of what is there, with its hash when that was
/// needed.
Sameness CompareWithRecord(const FileStamp& recorded, qint64 recordedAt, const QString& path,
                           bool checksum, FileStamp* now = nullptr);
/// Only what is known to be the same is.
bool IsSameAsRecorded(const FileStamp& recorded, qint64 recordedAt, const QString& path,
                      bool checksum, FileStamp* now = nullptr);

} // namespace Halvern::Jobs
