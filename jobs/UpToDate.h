// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/FileSet.h"
#include "syncservices/SyncDatabase.h"

namespace Halvern::Jobs {

/// After MarkCollisions: makes importing the same files again do nothing, and finish what an
/// earlier job left undone.
///
/// The module takes every given file whose target exists for a collision. One that was copied to
/// this very target earlier, and has not changed since on either side, is unchanged instead.
///
/// An unchanged copy may still hold the old links, when the job that made it was cancelled before
/// it rewrote them, or when the copy was locked then. Such a copy counts as copied: the stages that
/// follow leave the file where it is, rewrite its links and record it.
void MarkUpToDate(FileLink::FileSet& files, SyncServices::SyncDatabase& database);

} // namespace Halvern::Jobs
