// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::SyncServices {

/// File type lists and paths on the sync server.
///
/// A server path is "//server/share" or "scheme://host" (the server root; slashes or backslashes),
/// followed by the path below it: "//server/share/a/b" is "//server/share" and "/a/b". Server,
/// share and host must not be empty, so that "//server", "///a/b" and "file:///a" have no server
/// root. A scheme is a letter followed by at least one letter, digit, "+", "-" or "."; "C://a" is a
/// drive.
///
/// Safe to call from any thread.
class SYNCSERVICES_EXPORT SyncLibUtil
{
public:
    /// True when the extension of `path` (the text after the last dot of its file name) is in
    /// `types`, without regard to letter case. A type may be written "prt", ".prt" or "*.prt"; "*"
    /// matches every path. False for an empty list.
    static bool IsInFileTypeList(const QString& path, const QStringList& types);

    /// Splits a server path into its root and the rest. With `keepSeparator` the rest begins with
    /// the "/" that follows the root; without, it does not. Several slashes there count as one, so
    /// that the rest never looks like a server path itself. Nothing after the root gives an empty
    /// rest. A path without a server root gives an empty root and the path as the rest, whatever
    /// `keepSeparator` says. Backslashes become slashes in both.
    static void SplitServerPath(const QString& path, QString& serverRoot, QString& rest,
                                bool keepSeparator);
    /// The root that SplitServerPath finds; empty when there is none.
    static QString ExtractServerRoot(const QString& path, bool keepSeparator);
    /// The folder of the sync service's program: as configured, otherwise the folder of the running
    /// program; empty when neither is known.
    static QString GetSyncServiceExecutableFolderPath();
};

} // namespace Halvern::SyncServices
