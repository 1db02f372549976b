// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"

namespace Halvern::Jobs {

/// A link record of the contract does not hold it.
bool IsLinkTooLong(const QString& text);
/// Whether a file that is linked will be at its target, so that links may lead there.
bool HasPlace(const JobFile& file);
/// Where the link of a copy will lead: empty when it stays as it is in the source.
QString PlaceOf(const JobLink& link, const JobFile& holder, const JobFiles& files);

/// Works out for each copy which links it should hold (`wantedLinks`) and which of them must be
/// written into a fresh copy of the source (`rewrites`). A link stays byte for byte when its file
/// is missing or does not come along, and when it leads to the right copy as it stands.
///
/// A file with a link that no copy could hold fails. Files whose copies are in place and recorded,
/// but hold other links than they should, are to be relinked; where that cannot be they stay as
/// they are, and say why.
void PlanLinks(JobState& job);
/// Only the first part.
void WorkOutLinks(JobState& job);

} // namespace Halvern::Jobs
