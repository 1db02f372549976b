// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobControl.h"
#include "JobFile.h"
#include "Records.h"

namespace Halvern::Jobs {

/// Notes copies that somebody else made, times that changed without the content, and records that
/// cannot tell by the time whether a file changed. What was saved since it was compared is left to
/// the next import: recorded as it is now, it would pass for what was compared.
void NoteUnchangedCopies(JobState& job, JobControl& control, Records& records);

/// Nobody saved the copy since the stamp was taken.
bool IsStamped(const Base::FileStatus& copy, const FileStamp& stamp);

} // namespace Halvern::Jobs
