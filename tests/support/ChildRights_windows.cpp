// SPDX-License-Identifier: Apache-2.0

#include "ChildRights.h"

namespace Halvern::Test {

/// Administrators are not above the rights of a file.
void GiveOrdinaryRights(QProcess&) {}

} // namespace Halvern::Test
