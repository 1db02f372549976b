// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::Jobs {

/// True when a plug-in is registered that reads links inside files of this type, by the extension.
/// Whether it loads is another question.
bool IsKnownFormat(const QString& file);

} // namespace Halvern::Jobs
