// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Export.h"
#include "corsync/Plan.h"
#include "corsync/Plugins.h"

#include "filelink/Problem.h"

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Jobs {

/// What went wrong lies with a plug-in or its registration.
CORSYNCJOBS_EXPORT bool IsPluginProblem(const FileLink::Problem& problem);

/// What became of a file.
struct CORSYNCJOBS_EXPORT FileResult
{
    QString source;
    QString target;
    Outcome outcome = Outcome::NotDone;
    Remark remark = Remark::None;
    /// The source was deleted after copying; or why it was not, and because of which other file.
    bool sourceDeleted = false;
    SourceStays sourceStays = SourceStays::No;
    QString staysFor;
    /// The links inside the file at the target were rewritten.
    bool linksRewritten = false;
    /// As in PlannedFile.
    bool outside = false;
    bool isUnknownFormat = false;
    /// With a remark: the pattern that excludes, the file in the way, the system's reason.
    QString detail;
    /// With Missing: the files that link it, each once.
    QStringList linkedFrom;
    /// What went wrong with the file. A file that is in place may have problems, too.
    QList<FileLink::Problem> problems;

    /// One of the problems lies with a plug-in.
    bool PluginFailed() const;
    /// Something went wrong with the file: it failed, or is in place with a problem or with links
    /// that still are to be rewritten, unless a lock is the reason.
    bool IsProblem() const;
};

/// What there is to say about a job as a whole.
struct Summary
{
    /// How many files have each outcome; none is 0.
    QMap<Outcome, qint64> counts;
    /// Files that failed or are in place with a problem, and those of them on which a plug-in
    /// failed.
    qint64 filesWithProblems = 0;
    qint64 pluginFailures = 0;
    /// Problems of no single file of the job, each once: what `databaseError` says is not among
    /// them.
    QList<FileLink::Problem> problems;
    /// Registration files of plug-ins that do not do what their authors mean.
    QList<RegistrationFault> registrationFaults;
    /// What people should know though nothing went wrong in this job; sentences without a full
    /// stop.
    QStringList warnings;
    /// Why the sync database failed during this job; empty: it did not.
    QString databaseError;
    /// Conflicts and findings of the plan; with any, nothing was done.
    qsizetype conflicts = 0;
    QList<Finding> findings;
    /// Folders and other things that are no files, but are linked like files.
    qint64 linkedNoFiles = 0;
    /// Files that came from outside the project.
    qint64 outside = 0;
    /// How many files there are of each extension, without a dot, that no plug-in reads.
    QMap<QString, qint64> unknownFormats;
    bool cancelled = false;
    /// False when nothing was begun: planned only, stopped by conflicts, or cancelled before.
    bool executed = false;

    qint64 Count(Outcome outcome) const { return counts.value(outcome, 0); }
};

struct JobResult
{
    /// In the order of the plan, with the folders that could not be made between, and at the end
    /// what was left out. Empty when there are conflicts.
    QList<FileResult> files;
    Summary summary;
};

} // namespace Halvern::Jobs
