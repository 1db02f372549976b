// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QStringList>

namespace Halvern::Cli {

/// The whole command; `arguments` begin with the program's name. The result is the exit code.
int Run(const QStringList& arguments);

} // namespace Halvern::Cli
