// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Export.h"
#include "corsync/Session.h"

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Jobs {

/// What a file of the cloud cache folder was before it was replaced, as the base store keeps it.
struct Version
{
    /// 1 is the newest. The others move on by one when a new one is kept.
    int number = 0;
    /// When it was kept (UTC): the moment before it was replaced.
    QDateTime saved;
    qint64 bytes = 0;
    /// The copy in the base store. Not to be changed.
    QString storeFile;
};

/// The file that an argument means, absolute: a relative path that does not lead into the cloud
/// cache folder from the current folder is taken from the cloud cache folder. The file need not
/// exist, and may lie elsewhere.
CORSYNCJOBS_EXPORT QString VersionedFile(const Session& session, const QString& file);

/// Newest first; empty for a file that was never replaced. Throws JobError(VersionMissing) when
/// there is neither such a file nor a version of it.
CORSYNCJOBS_EXPORT QList<Version> ListVersions(const Session& session, const QString& file);

struct RestoredVersion
{
    Version version;
    /// The file that holds it now, absolute.
    QString file;
    /// A file stood there. It is the newest version of the file now, and the others have moved on.
    bool replaced = false;
};

/// Puts a version back in the place of its file, which must lie in the cloud cache folder: what
/// stands there is kept as a version first, and the file is at any time either the old or the
/// restored one. Links are never followed on the way. With `output` the version is written there
/// instead, to a file that must not exist.
///
/// Throws JobError, and then the file is as it was: VersionMissing; RestoreRefused for a place that
/// is no good, such as a symbolic link, a folder, a read-only file; RestoreFailed when the file
/// there cannot be kept, is held by another program, changes at this moment, or the disk fails or
/// the copy in the base store is damaged; WrongOrder in a session that is for plans only, without
/// `output`.
CORSYNCJOBS_EXPORT RestoredVersion RestoreVersion(const Session& session, const QString& file,
                                                  int number, const QString& output = {});

} // namespace Halvern::Jobs
