// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"
#include "syncplugin/FileLinkInfo.h"

namespace Halvern::FileLink::Stages {

/// Rewrites the links inside every copy, and inside every file that links a copy. False on a
/// cancel, and when a file could not be rewritten.
bool RepathFiles(const StageContext& context);
/// One member of the set, which counts as repathed afterwards whatever became of it.
bool RepathMapping(const StageContext& context, const FileMappingPointer& mapping);
/// Rewrites the given links inside one file, read-only or not. What is thrown goes to the caller.
bool RepathFile(const StageContext& context, const QString& path, const FileLinkList& links);
bool RepathFile(const StageContext& context, const QString& path,
                const QList<SyncPlugin::FileLinkInfo>& links);

} // namespace Halvern::FileLink::Stages
