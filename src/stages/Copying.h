// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Copies or moves every file that is not to stay out, makes the selected folders, and computes
/// the links of the copies. True when it ran to its end, whatever failed: the Copied flags tell.
bool CopyFiles(const StageContext& context);
/// Makes one folder of the selection, `source`. True when it is there.
bool CreateFolder(const StageContext& context, const QString& path, bool hidden,
                  const QString& source);

} // namespace Halvern::FileLink::Stages
