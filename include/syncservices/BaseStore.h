// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace Halvern::SyncServices {

/// A copy of a file in the base store, taken before the file was replaced.
struct StoredVersion
{
    /// When it was taken (UTC); of a content that was kept several times, the last time.
    QDateTime saved;
    qint64 bytes = 0;
    /// Absolute path of the copy. Its name tells a hash of the content.
    QString storeFile;
};

/// What a host wants to know before it counts on the base store.
struct BaseStoreStatus
{
    /// Absolute; empty when there is none because the database is in memory.
    QString folder;
    /// In bytes; 0 keeps nothing.
    qint64 limit = 0;
    /// What all copies have together.
    qint64 used = 0;
    /// What one run can keep now, older copies giving way: the limit without what other runs keep
    /// that have not ended yet.
    qint64 available = 0;
    /// Why nothing can be kept; empty when nothing is known to stand against it. Nothing is written
    /// to find out.
    QString problem;
};

} // namespace Halvern::SyncServices
