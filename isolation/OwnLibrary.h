// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::Isolation {

/// The file of the library, or the program, that this code is linked into.
QString OwnLibraryFile();

} // namespace Halvern::Isolation
