// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::Jobs {

/// What is wrong with a database as a whole; empty when nothing is, or when it is too large to be
/// looked through in a moment.
QString FindDamage(const QString& databaseFile);

} // namespace Halvern::Jobs
