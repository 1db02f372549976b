// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Rewrites the files of a folder of the sync database that another program held before. False
/// without such a folder.
bool RepathFolder(const StageContext& context, int folderId);
/// The same for given items. A file that is still held stays pending. False on a cancel.
bool RepathPendingItems(const StageContext& context, const QList<std::shared_ptr<SyncItem>>& items);

} // namespace Halvern::FileLink::Stages
