// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Export.h"
#include "corsync/JobResult.h"

#include "filelink/Problem.h"

namespace Halvern::Jobs {

/// The steps of a job, in their order. Laying out and looking for conflicts may come twice.
enum class Phase
{
    ReadingSelection,
    ReadingLinks,
    LayingOut,
    LookingForConflicts,
    ResolvingConflicts,
    Copying,
    RewritingLinks,
    Recording,
};

/// How far a phase is.
struct Progress
{
    Phase phase = Phase::ReadingSelection;
    /// Files that were copied or rewritten in this phase; `total` of them are to come, 0 when that
    /// is not known.
    qint64 files = 0;
    qint64 total = 0;
    /// Of these files, and of the one that is being copied what there is of it. The sizes are those
    /// that were planned with.
    qint64 bytes = 0;
    qint64 totalBytes = 0;
    /// Of the file that is being copied, or was last, and its size. They grow until the next file.
    qint64 fileBytes = 0;
    qint64 fileSize = 0;
};

/// Is told what happens, while it happens, on the thread that runs the job. Everything but what a
/// host wants to know may be left out.
///
/// What an observer throws stops the job as a cancel does. What was copied until then is recorded;
/// after that the exception goes on to the caller of the job.
class CORSYNCJOBS_EXPORT IJobObserver
{
public:
    virtual ~IJobObserver();

    virtual void PhaseBegun(Phase phase, qint64 total);
    /// Comes often, at least once for each file, and many times while a large one is copied: cheap
    /// work only.
    virtual void Progressed(const Progress& progress);
    /// What became of a file, while the plan is executed. Each file comes once during Copying, in
    /// the order of the plan, and again when a later phase changes what can be said about it: its
    /// links were rewritten, or could not be. The last one counts.
    virtual void FileDone(const FileResult& result);
    /// Something went wrong, in planning or execution. The plan, or the result when it was
    /// executed, holds it as well: at its file or, when it is about none of the job, for the whole.
    /// What an outcome or the summary says already (a lock, a failure of the sync database) is not
    /// repeated there, nor is what comes twice in the same words.
    virtual void ProblemFound(const FileLink::Problem& problem);
};

} // namespace Halvern::Jobs
