// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"

namespace Halvern::Jobs {

/// Of the file as it is now; unknown when there is none. With `withHash` its content is read.
FileStamp StampOf(const QString& path, bool withHash);
/// A file of this time may have changed again within the same tick of the clock.
bool IsRacyAt(qint64 modified, qint64 recordedAt);
bool IsRacy(qint64 modified);
/// Whether the file is what was recorded at that time: by size and nanoseconds, by content where
/// the time cannot tell, with `checksum` always. `now` (may be null) gets what it is now.
bool IsSameAsRecorded(const FileStamp& recorded, qint64 recordedAt, const QString& path,
                      bool checksum, FileStamp* now);

} // namespace Halvern::Jobs
