// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QDateTime>

namespace Halvern::FileLink {

/// Two file times are equal in whole seconds, as file systems and the database keep fractions
/// differently. A time that is not known equals none: as a number it would be 1970, which files
/// from archives without times really have.
inline bool IsSameSecond(const QDateTime& a, const QDateTime& b)
{
    return a.isValid() && b.isValid() && a.toSecsSinceEpoch() == b.toSecsSinceEpoch();
}

} // namespace Halvern::FileLink
