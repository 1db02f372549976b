// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/CancelToken.h"
#include "corsync/Export.h"
#include "corsync/JobObserver.h"
#include "corsync/JobResult.h"
#include "corsync/Session.h"

#include <QtCore/QString>

namespace Halvern::Jobs {

/// Tries again to rewrite the links of those copies whose links are still to be rewritten, because
/// another program had them open or a plug-in failed. It needs no sources: what is to be written
/// was recorded when the copies were made.
///
/// `folder` is absolute in the cloud cache folder or relative to it; only copies in and below it
/// are tried. Empty: all. The result names each copy that was tried, the source it was made of, and
/// what became of it: Updated or Unchanged once its links are what they should be, Locked or with
/// the remark RewritePending while they are not. Copies that somebody changed since stay as they
/// are (Left). Observer and cancel token may be null. Throws JobError: SyncOff, TargetRefused for a
/// folder that does not lie in the cloud cache folder, WrongOrder in a session that is for plans
/// only.
CORSYNCJOBS_EXPORT JobResult RetryRewrites(const Session& session, const QString& folder,
                                           IJobObserver* observer = nullptr,
                                           const CancelToken* cancel = nullptr);

} // namespace Halvern::Jobs
