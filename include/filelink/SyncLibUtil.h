// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/Export.h"

#include <QtCore/QString>

namespace Halvern::SyncFolderManagerLib {

/// Paths on the sync server. See SyncServices::SyncLibUtil for what a server root is.
class FILELINK_EXPORT SyncLibUtil
{
public:
    /// Splits a server path; the rest keeps its leading separator.
    static void SplitServerPath(const QString& path, QString& serverRoot, QString& rest);
    static bool PathHasServerRoot(const QString& path);
    /// Empty when the path has no server root.
    static QString ExtractServerRoot(const QString& path);
    /// The path below the server root, without a leading separator.
    static QString StripServerRoot(const QString& path);
    /// Absolute path of "Corsync.exe" in the sync service's folder; a relative or empty folder is
    /// taken against the current directory.
    static QString GetSyncServiceExecutableFilePath();
};

} // namespace Halvern::SyncFolderManagerLib
