// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Versions.h"

#include "syncservices/SyncManager.h"

namespace Halvern::Jobs {

/// Of an absolute path; empty for what lies elsewhere.
QString PathBelowCloudFolder(const Session& session, const QString& file);
/// Of an absolute path, newest first.
QList<Version> ReadVersions(const QString& file);

} // namespace Halvern::Jobs
