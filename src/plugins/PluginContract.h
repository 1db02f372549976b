// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

class QLibrary;

namespace Halvern::FileLink {

// Why a plug-in cannot be used with this module's contract, as the line to log; empty when it can.
// What states no contract version is taken for version 1.

/// `version` is what its registration file says.
QString CheckRegisteredContract(const QString& module, const QString& version);

/// What the loaded library says. Nothing but its one C function is called.
QString CheckLibraryContract(const QString& module, QLibrary& library);

} // namespace Halvern::FileLink
