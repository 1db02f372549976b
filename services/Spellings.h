// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::SyncServices {

class SqliteConnection;

// Paths that differ in letter case alone: two spellings of one file, or two files where the disk
// says so. Only the disk knows. On Windows there are no such paths.

/// Both paths are there, and are two files or folders, or lie in two folders that are. Two hard
/// links of one file are two.
bool AreTwins(const QString& path, const QString& other);

/// The same, or a file or folder stands at `recorded` and nothing at `path`.
bool StandsBeside(const QString& recorded, const QString& path);

/// The statements on one table whose rows have a key of their path.
struct SpellingQueries
{
    /// By folded key and user: id, key and path of rows. The row with the third parameter as its
    /// key comes first.
    const char* find;
    /// Gives a row (second parameter) another key.
    const char* rename;
};

/// Makes way for a row with the key of `path`, in a transaction of the caller's: a row of the same
/// user whose path differs in letter case alone gets that key, unless there is a row with the key
/// already or the other path is there beside this one.
void AdoptOtherSpelling(SqliteConnection& connection, const SpellingQueries& queries,
                        const QString& path, int authenticationId);

} // namespace Halvern::SyncServices
