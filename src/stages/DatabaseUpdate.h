// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Writes an item for every copy in the trees of links, with its links resolved to the items of the
/// files that they name. False on a cancel, and when there is nothing to write to, no tree, or the
/// last file of a tree could not be written.
bool UpdateSyncDatabase(const StageContext& context);

} // namespace Halvern::FileLink::Stages
