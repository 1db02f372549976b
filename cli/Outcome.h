// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExitCode.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Cli {

/// What happened to a file. The names are part of the JSON output.
enum class FileStatus
{
    Copied,
    Moved,
    Replaced,
    Renamed,
    /// The file that stands at the target is used.
    Kept,
    Unchanged,
    /// Lies in the cloud cache folder already.
    InPlace,
    /// Not to be copied; the reason says why.
    Skipped,
    /// In place, but its links are still to be rewritten, because another program has it open.
    Locked,
    /// Linked, but not there.
    Missing,
    /// Linked, but no file.
    Url,
    Failed,
    /// The job was cancelled before this file's turn.
    NotDone,
};

/// "copied", "renamed", "not-done" ...
QString StatusName(FileStatus status);

struct FileOutcome
{
    FileStatus status = FileStatus::NotDone;
    QString source;
    QString target;
    /// The source was deleted after copying.
    bool moved = false;
    /// With Missing: the files that link it.
    QStringList linkedFrom;
    /// Why a file failed or was skipped; for a file that is in place, what went wrong beside that.
    QString reason;
    /// What went wrong lies with a plug-in.
    bool pluginFailed = false;
};

/// Something went wrong with the file: it failed, or is in place with a problem.
bool IsProblem(const FileOutcome& outcome);
/// The exit code that this file alone would give.
ExitCode ExitCodeOf(const FileOutcome& outcome);

} // namespace Halvern::Cli
