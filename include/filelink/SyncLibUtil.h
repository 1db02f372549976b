// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/Export.h"

#include <QtCore/QString>

namespace Halvern::SyncFolderManagerLib {

/// Paths on the sync server. See SyncServices::SyncLibUtil for what a server root is. Safe to call
/// from any thread.
class FILELINK_EXPORT SyncLibUtil
{
public:
    /// Splits a server path; the rest keeps its leading separator. Without a server root
    /// `serverRoot` becomes empty and `rest` the path.
    static void SplitServerPath(const QString& path, QString& serverRoot, QString& rest);
    /// True when ExtractServerRoot finds one.
    static bool PathHasServerRoot(const QString& path);
    /// Empty when the path has no server root.
    static QString ExtractServerRoot(const QString& path);
    /// The path below the server root, without a leading separator; the path itself when it has no
    /// server root.
    static QString StripServerRoot(const QString& path);
    /// Absolute path of "Corsync.exe" in the sync service's folder; a relative or empty folder is
    /// taken against the current directory. Whether there is such a file is not asked.
    static QString GetSyncServiceExecutableFilePath();
};

} // namespace Halvern::SyncFolderManagerLib
