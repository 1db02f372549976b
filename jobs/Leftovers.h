// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace Halvern::Jobs {

/// What jobs that were killed left in the cloud folder, absolute, in the order of the names: folders
/// in which files were made ready, and unfinished copies. What a job holds that still runs is none.
/// Ends early when `goesOn` says no.
QStringList ListLeftovers(const QString& cloudFolder, const std::function<bool()>& goesOn);

} // namespace Halvern::Jobs
