// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::Test {

/// The last-modified time in nanoseconds since the beginning of 1970, as exact as the disk has it.
qint64 ModifiedNanoseconds(const QString& path);
/// Of a file that may be written.
void SetModifiedNanoseconds(const QString& path, qint64 nanoseconds);

} // namespace Halvern::Test
