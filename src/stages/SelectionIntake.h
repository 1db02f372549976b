// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Makes a new file set of what was selected, by the context's options and file types. `target` is
/// a folder, absolute or relative to the cloud cache folder; with `targetIsFile` a single source
/// goes to exactly `target` unless that is a folder. Without sources the existing file `target` is
/// source and target in one. False, with the earlier set still there, on bad arguments and on a
/// cancel.
bool TakeSelection(StageContext& context, const QStringList& sources, const QString& target,
                   bool targetIsFile);

} // namespace Halvern::FileLink::Stages
