// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Outcome.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Cli {

/// The sources of an import as absolute paths, without repetitions and without what lies in a
/// folder that is given too. Throws CommandError: SourceMissing when one does not exist, Usage when
/// one cannot be imported. Requires a session.
QStringList CheckedSources(const QStringList& arguments);
/// The absolute target folder. Throws CommandError(Usage) when it does not lie in the cloud cache
/// folder or names a file. Requires a session.
QString CheckedTarget(const QString& argument);
/// What lies in the selection but is never imported, which the module passes over without a word:
/// names that hold a ":", symbolic links to folders, and what is neither file nor folder.
QList<FileOutcome> LeftOut(const QStringList& sources);

} // namespace Halvern::Cli
