// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::SyncServices {

/// What Windows makes of paths, as rules on their text: they hold wherever the text is looked at.

/// Where this path leads depends on the current drive or on its current folder, though the path has
/// a drive or begins with a slash: "D:a", "/a".
bool IsDriveRelative(const QString& path);

/// An absolute, clean path as functions of the system take it: with backslashes, and from a length
/// on that they refuse with a prefix.
///
///     "D:/a.prt" gives "D:\a.prt", and one of 248 characters or more "\\?\D:\...\a.prt" or
///     "\\?\UNC\server\share\...\a.prt"
QString WindowsApiPath(const QString& path);

} // namespace Halvern::SyncServices
