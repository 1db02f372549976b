// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Halvern::Cli {

// Names of files, links and what plug-ins say may hold anything. On a terminal control characters
// would steer it, and those that turn the direction of writing would show a name as another one.
// They become visible instead: "\x1b", "\u202e".

/// For one line: line breaks and tabs become visible, too.
QString Masked(const QString& text);
/// For text of several lines, which stay.
QString MaskedLines(const QString& text);
/// JSON in UTF-8 that means the same, with these characters as JSON's own escapes.
QByteArray MaskedJson(const QByteArray& json);

} // namespace Halvern::Cli
