// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Plan.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Jobs {

/// Throws JobError(SyncOff) when the settings say that nothing is to be brought. Requires a
/// session.
void RequireSync();
/// The sources of an import as absolute paths, without repetitions and without what lies in a
/// folder that is given too. Throws JobError: SourceMissing when one does not exist, SourceRefused
/// when one cannot be imported. Requires a session.
QStringList CheckedSources(const QStringList& sources);
/// The absolute target folder. Throws JobError(TargetRefused) when it does not lie in the cloud
/// cache folder or names a file. Requires a session.
QString CheckedTarget(const QString& target);

} // namespace Halvern::Jobs
