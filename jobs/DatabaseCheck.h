// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace Halvern::Jobs {

/// What is wrong with a database as a whole; empty when nothing is, or when it is too large to be
/// looked through in a moment.
QString FindDamage(const QString& databaseFile);
/// The same to the end, however long it takes, with rows that refer to rows which are not there.
/// Ends early, with what was found, when `goesOn` says no. One that cannot be asked because others
/// write is told as such.
QStringList ListDamage(const QString& databaseFile, const std::function<bool()>& goesOn);

} // namespace Halvern::Jobs
