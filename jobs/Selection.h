// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Jobs {

/// What an import was given, as absolute paths without repetitions.
struct Sources
{
    QStringList outermost;
    /// Those that lie in a folder that is given too.
    QStringList inside;
};

/// Throws JobError(SyncOff) when the settings say that nothing is to be brought. Requires a
/// session.
void RequireSync();
/// Throws JobError: SourceMissing when one does not exist, SourceRefused when one cannot be
/// imported. Requires a session.
Sources CheckedSources(const QStringList& sources);
/// Throws JobError(PatternRefused) when one of the patterns could never match anything.
void RequirePatterns(const QStringList& exclude);
/// Throws JobError(FolderMissing) for one that does not exist or is no folder: a job that is to
/// take files from there alone would take none.
void RequireFolders(const QStringList& within);
/// The absolute target folder. Throws JobError(TargetRefused) when it does not lie in the cloud
/// cache folder or names a file. Requires a session.
QString CheckedTarget(const QString& target);

} // namespace Halvern::Jobs
