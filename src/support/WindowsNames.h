// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::FileLink {

/// What Windows makes of paths, as rules on their text: they hold wherever the paths are looked at.

/// The first part of a path that Windows does not take as the name of a file or folder: it holds a
/// character that names may not have, ends with a dot or a blank, or names a device. Empty when all
/// parts are names. `path` is absolute and clean.
///
///     "D:/a/b?.prt" gives "b?.prt", "D:/aux.prt" gives "aux.prt", "//server/share/a" gives nothing
QString ForbiddenWindowsName(const QString& path);

/// An absolute, clean path as functions of the system take it. They refuse 260 characters and more,
/// and a folder from 248 on, unless the path has a prefix that turns their parsing off.
///
///     "D:/a.prt" gives "D:\a.prt", and one too long "\\?\D:\...\a.prt" or
///     "\\?\UNC\server\share\..."
QString WindowsApiPath(const QString& path);

/// False for a path of WindowsApiPath that the C runtime refuses: it takes the "?" of the prefix
/// for a wildcard, and answers that there is no such file.
bool RuntimeTakesPath(const QString& native);

} // namespace Halvern::FileLink
