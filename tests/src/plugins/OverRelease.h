// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::Test {

/// Gives back a library that something else has loaded, so that its owner's own unload fails.
void OverRelease(const QString& library);

} // namespace Halvern::Test
